#include "codecs/BlockDataType.h"

namespace qav::block {
namespace {

constexpr std::array<int, 4> kThreeOf8{3, 8, 8, 8};
constexpr std::array<int, 4> kOneOf8{1, 8, 0, 0};
constexpr std::array<int, 4> kOneOf16{1, 16, 0, 0};

}  // namespace

int decodeDataType(int code, DataType& type) {
  if (code >= 0 && code <= 9) {
    type = {kOneOf16, true, code};
    return 0;
  }
  if (code < 0) return kUnknownCode;
  const int compression = code % 100;
  switch (code - compression) {
    case 10400:
      type.description = kThreeOf8;
      break;
    case 20400:
      type.description = kOneOf8;
      break;
    case 20500:
      type.description = kOneOf16;
      break;
    default:
      return kUnknownCode;
  }
  type.compressed = compression >= 1;
  type.compression = compression;
  return 0;
}

int encodeDataType(const DataType& type, int& code) {
  if (type.description == kThreeOf8)
    code = 10400;
  else if (type.description == kOneOf8)
    code = 20400;
  else
    return kUnknownDescription;
  if (type.compressed) code += type.compression;
  return 0;
}

}  // namespace qav::block
