#pragma once

#include <array>

namespace qav::block {

/// What a data-type code of a block-record file stands for.
struct DataType {
  std::array<int, 4> description{};  ///< number of channels, then the bits of up to three of them
  bool compressed = false;
  int compression = 0;

  int channels() const { return description[0]; }
  int bytesPerSample() const { return description[1] / 8; }
};

/// Error numbers of the converters; 0 is none.
inline constexpr int kUnknownCode = 1;
inline constexpr int kUnknownDescription = 3;

/// Takes a code apart.
int decodeDataType(int code, DataType& type);
/// Puts a code together: three or one channels of 8 bits.
int encodeDataType(const DataType& type, int& code);

}  // namespace qav::block
