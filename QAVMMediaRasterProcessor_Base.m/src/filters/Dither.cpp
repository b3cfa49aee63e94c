#include <QAVMMediaImageProcessor.h>

#include "kernels/Dithering.h"
#include "kernels/VariableDiffusion.h"

#include <atomic>
#include <vector>

namespace {

// Serves every image of the process until it is set again.
std::atomic<unsigned char> ditherThreshold{127};

void dither(unsigned char* pixels, std::size_t width, std::size_t height, QAVMMIDitherType type) {
  const auto& kernels = qav::kernels::ditheringKernels();
  if (type == QAVMMIDitherThreshold) {
    kernels.threshold(pixels, width * height, ditherThreshold.load(std::memory_order_relaxed));
  } else if (type == QAVMMIDitherVariable) {
    std::vector<std::uint32_t> sums(width + 2);
    qav::kernels::diffuseVariably(pixels, width, height, sums.data());
  } else {
    std::vector<std::int16_t> scratch(qav::kernels::diffusionScratch(width));
    kernels.diffuse[type](pixels, width, height, scratch.data());
  }
}

}  // namespace

void QAVMMediaImageProcessor::SetDitherThreshold(int threshold) {
  ditherThreshold.store(static_cast<unsigned char>(threshold & 255), std::memory_order_relaxed);
}

HRESULT QAVMMediaImageProcessor::Dither(QAVPixelImage& image, QAVMMIDitherType type, void (*)(float),
                                        unsigned char makeBitonal, unsigned char acceptBitonal) {
  if (image.GetFormat() == BitonalRuns) return acceptBitonal ? S_OK : E_FAIL;
  image.ConvertToFormat(L8);
  unsigned char* const pixels = image.GetPixelsToModify();
  if (!pixels) return E_FAIL;
  const bool known = static_cast<std::uint32_t>(type) <= QAVMMIDitherThreshold;
  int width = 0, height = 0;
  image.GetSize(width, height);
  if (known && width > 0 && height > 0)
    dither(pixels, static_cast<std::size_t>(width), static_cast<std::size_t>(height), type);
  if (makeBitonal) image.ConvertToFormat(BitonalRuns);
  return known ? S_OK : E_FAIL;
}
