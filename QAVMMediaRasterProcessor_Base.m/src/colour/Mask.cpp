#include <QAVMMediaImageProcessor.h>

#include "PixelMemory.h"
#include "kernels/MaskAlpha.h"

#include <algorithm>
#include <memory>

namespace {

std::size_t pixelCount(int width, int height) {
  return static_cast<std::size_t>(std::max(width, 0)) * static_cast<std::size_t>(std::max(height, 0));
}

}  // namespace

QAVPixelImage* QAVMMediaImageProcessor::Mask(const QAVPixelImage& source, const QAVPixelImage& mask,
                                             QAVMMIMaskType type, void (*)(float)) {
  int width = 0, height = 0, maskWidth = 0, maskHeight = 0;
  source.GetSize(width, height);
  mask.GetSize(maskWidth, maskHeight);
  if (source.GetFormat() != RGBA8888 || mask.GetFormat() != RGBA8888) return nullptr;
  if (width != maskWidth || height != maskHeight) return nullptr;
  const unsigned char* const maskPixels = mask.GetPixelsToRead();
  const unsigned char* const sourcePixels = source.GetPixelsToRead();
  const std::size_t pixels = pixelCount(width, height);
  if (!maskPixels || (!sourcePixels && pixels > 0)) return nullptr;

  // Every byte is written, so the buffer is made here: an image's own would be zeroed first.
  std::unique_ptr<unsigned char[]> result(newPixelBuffer(4 * pixels));
  const auto& kernels = qav::kernels::maskAlphaKernels();
  (type == QAVMMIMaskLuminance ? kernels.byLuminance : kernels.byAlpha)(sourcePixels, maskPixels, pixels, result.get());
  auto* image = new QAVPixelImage(width, height, RGBA8888, result.get(), QAVDeallocatePixelsByImage);
  result.release();
  return image;
}
