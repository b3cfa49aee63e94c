#include "colour/MirrorPixels.h"

#include <CCITT.h>

#include <algorithm>
#include <vector>

namespace qav {
namespace {

constexpr unsigned char reversedBits(unsigned char byte) {
  unsigned b = byte;
  b = (b & 0x0F) << 4 | (b & 0xF0) >> 4;
  b = (b & 0x33) << 2 | (b & 0xCC) >> 2;
  b = (b & 0x55) << 1 | (b & 0xAA) >> 1;
  return static_cast<unsigned char>(b);
}

// By width mod 8 and over an eighth of the row: where the picture ends up when the width is no multiple of 8 is known
// to callers.
void shiftTowardsStart(std::vector<unsigned char>& row, unsigned bits) {
  unsigned carry = 0;
  for (std::size_t i = (row.size() + 7) / 8; i-- > 0;) {
    const unsigned byte = row[i];
    row[i] = static_cast<unsigned char>(byte << bits | carry);
    carry = byte >> (8 - bits);
  }
}

void mirrorRow(std::vector<unsigned char>& row, unsigned width) {
  std::reverse(row.begin(), row.end());
  std::transform(row.begin(), row.end(), row.begin(), reversedBits);
  if (width % 8 != 0) shiftTowardsStart(row, width % 8);
}

void replaceRow(QAVPixelImage& image, int y, const std::vector<unsigned char>& row, unsigned width) {
  unsigned char*& coded = image.GetPixelsRuns(y);
  delete[] coded;
  coded = nullptr;
  image.GetPixelsRunsLength(y) = 0;
  image.GetPixelsRunsLength(y) = CCITT::encode(image.GetPixelsRuns(y), row.data(), width);
}

}  // namespace

HRESULT MirrorRunRows(QAVPixelImage& image) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  const unsigned columns = static_cast<unsigned>(std::max(width, 0));
  std::vector<unsigned char> row((std::size_t{columns} + 7) / 8);
  CCITT::build_decoding_states();
  for (int y = 0; y < height; ++y) {
    std::fill(row.begin(), row.end(), static_cast<unsigned char>(0));
    if (const unsigned char* coded = image.GetPixelsRuns(y))
      CCITT::decode(row.data(), coded, static_cast<unsigned>(std::max(0, image.GetPixelsRunsLength(y))), columns);
    mirrorRow(row, columns);
    replaceRow(image, y, row, columns);
  }
  CCITT::destroy_decoding_states();
  return S_OK;
}

}  // namespace qav
