#include "BitonalRows.h"
#include "CCITTRow.h"

#include <algorithm>
#include <cstring>

namespace {

std::size_t codedLength(const QAVPixelImage& image, int row) {
  return static_cast<std::size_t>(std::max(0, image.GetPixelsRunsLength(row)));
}

}  // namespace

BitonalRows::BitonalRows(int width) : width_(width), bitmap_((static_cast<std::size_t>(width) + 7) / 8) {}

unsigned char* BitonalRows::Read(const QAVPixelImage& image, int row) {
  std::fill(bitmap_.begin(), bitmap_.end(), static_cast<unsigned char>(0));
  unsigned char* const bits = bitmap_.data();
  forEachBlackRun(image.GetPixelsRuns(row), codedLength(image, row), width_,
                  [bits](std::int64_t from, std::int64_t to) { setBits(bits, from, to); });
  return bits;
}

void BitonalRows::Store(QAVPixelImage& image, int row) {
  if (!coded_) coded_.reset(new unsigned char[ccittRowBound(width_)]);
  const std::size_t length = encodeCCITTRow(bitmap_.data(), width_, coded_.get());
  std::unique_ptr<unsigned char[]> kept(new unsigned char[length]);
  std::memcpy(kept.get(), coded_.get(), length);
  delete[] image.GetPixelsRuns(row);
  image.GetPixelsRuns(row) = kept.release();
  image.GetPixelsRunsLength(row) = static_cast<int>(length);
}

void readBitonalRow(const QAVPixelImage& image, int row, int width, unsigned char* luminance) {
  if (width == 0) return;
  std::memset(luminance, 255, static_cast<std::size_t>(width));
  forEachBlackRun(image.GetPixelsRuns(row), codedLength(image, row), width,
                  [luminance](std::int64_t from, std::int64_t to) {
                    std::memset(luminance + from, 0, static_cast<std::size_t>(to - from));
                  });
}

void packBitonalRow(const unsigned char* luminance, int width, unsigned char* bitmap) noexcept {
  int x = 0;
  for (; x + 8 <= width; x += 8, luminance += 8) {
    unsigned byte = 0;
    for (int bit = 0; bit < 8; ++bit) byte = byte << 1 | (luminance[bit] < 128);
    *bitmap++ = static_cast<unsigned char>(byte);
  }
  if (x == width) return;
  unsigned byte = 0;
  for (int bit = 0; bit < width - x; ++bit) byte |= (luminance[bit] < 128 ? 0x80u : 0u) >> bit;
  *bitmap = static_cast<unsigned char>(byte);
}
