#include <QAVPrintEncoding.h>

#include <QAVPrtImageIterator.h>

#include "formats/PixelSpan.h"
#include "kernels/PrintSamples.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

namespace {

/// Writes bytes as base-85 text in blocks, each with line breaks of its own.
class BlockWriter {
 public:
  explicit BlockWriter(std::ostream& os) : os_(os) {}

  void add(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
      if (filled_ == 0 && bytes.size() >= kBlock) {
        DumpASCII85(os_, bytes.data(), kBlock);
        bytes = bytes.subspan(kBlock);
        continue;
      }
      const std::size_t moved = std::min(bytes.size(), kBlock - filled_);
      std::memcpy(block_ + filled_, bytes.data(), moved);
      bytes = bytes.subspan(moved);
      filled_ += moved;
      if (filled_ == kBlock) finish();
    }
  }

  void finish() {
    if (filled_ > 0) DumpASCII85(os_, block_, filled_);
    filled_ = 0;
  }

 private:
  static constexpr std::size_t kBlock = 1024;

  std::ostream& os_;
  std::uint8_t block_[kBlock];
  std::size_t filled_ = 0;
};

}  // namespace

int DumpImage(ostream_withassign& os, const QAVPixelImage* image, int bottomUp) {
  if (!image) return E_FAIL;
  QAVPrtImageIterator iterator(image, bottomUp, 1);
  BlockWriter writer(os);
  std::uint8_t room[8192];
  for (auto samples = iterator.NextSamples(room); !samples.empty(); samples = iterator.NextSamples(room))
    writer.add(samples);
  writer.finish();
  return S_OK;
}

int DumpMask(ostream_withassign& os, const QAVPixelImage* image, int /*ignored*/) {
  const std::uint8_t* const pixels = image ? image->GetPixelsToRead() : nullptr;
  if (!pixels) return E_FAIL;
  const QAVPixelImageFormat format = image->GetFormat();
  if (format != LA88 && format != RGBA8888) return E_FAIL;
  int width = 0, height = 0;
  image->GetSize(width, height);
  if (width < 1 || height < 1) return S_OK;
  const int channels = qav::byteChannels(format);
  const auto pixelsOfRow = static_cast<std::size_t>(width);
  std::vector<std::uint8_t> bits((pixelsOfRow + 7) / 8);
  BlockWriter writer(os);
  for (auto row = static_cast<std::size_t>(height); row-- > 0;) {
    const std::uint8_t* const from = pixels + row * pixelsOfRow * static_cast<std::size_t>(channels);
    qav::kernels::printSamplesKernels().transparentBits(from, pixelsOfRow, channels, bits.data());
    writer.add(bits);
  }
  writer.finish();
  return S_OK;
}
