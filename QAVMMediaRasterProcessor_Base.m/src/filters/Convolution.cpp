#include <QAVMMediaImageProcessor.h>

#include "filters/ConvolutionKernel.h"
#include "filters/ConvolutionSweep.h"
#include "formats/Saturate.h"

#include <cmath>
#include <cstring>

using qav::ConvolutionKernel;

namespace {

// The first byte of the pixel, or null when row and column lead to no pixel of the buffer.
unsigned char* pixelAt(std::int64_t row, std::int64_t column, int width, int height, unsigned char* pixels) {
  if (!pixels || width < 1 || height < 1) return nullptr;
  const std::int64_t index = row * width + column;
  return index >= 0 && index < std::int64_t{width} * height ? pixels + index * 4 : nullptr;
}

struct ChannelSums {
  float red = 0.0f, green = 0.0f, blue = 0.0f, alpha = 0.0f;
};

}  // namespace

HRESULT QAVMMediaImageProcessor::GetPixelRGBA(int row, int column, int width, int height, unsigned char* pixels,
                                              float& red, float& green, float& blue, float& alpha) {
  red = green = blue = alpha = 0.0f;
  if (const unsigned char* pixel = pixelAt(row, column, width, height, pixels)) {
    red = pixel[0];
    green = pixel[1];
    blue = pixel[2];
    alpha = pixel[3];
  }
  return S_OK;
}

HRESULT QAVMMediaImageProcessor::ApplyKernelRGBA(int row, int column, int width, int height, int kernelSize,
                                                 const float* kernel, unsigned char* source,
                                                 unsigned char* destination) {
  if (!source || !kernel) return E_FAIL;
  const ConvolutionKernel weights(kernelSize, kernel);
  const std::int64_t half = weights.half();
  ChannelSums sums;
  for (std::int64_t dy = -half; dy <= half; ++dy) {
    const std::int64_t r = row + dy;
    if (r < 0 || r >= height) continue;
    for (std::int64_t dx = -half; dx <= half; ++dx) {
      const std::int64_t c = column + dx;
      if (c < 0 || c >= width) continue;
      ChannelSums tap;
      GetPixelRGBA(static_cast<int>(r), static_cast<int>(c), width, height, source, tap.red, tap.green, tap.blue,
                   tap.alpha);
      const float weight = *weights.at(dy, dx);
      sums.red += tap.red * weight;
      sums.green += tap.green * weight;
      sums.blue += tap.blue * weight;
      sums.alpha += tap.alpha * weight;
    }
  }
  unsigned char* const pixel = pixelAt(row, column, width, height, destination);
  if (!pixel) return S_OK;
  const float sum = weights.sum();
  pixel[0] = qav::byteFrom(sums.red / sum);
  pixel[1] = qav::byteFrom(sums.green / sum);
  pixel[2] = qav::byteFrom(sums.blue / sum);
  pixel[3] = qav::byteFrom(sums.alpha / sum);
  return S_OK;
}

HRESULT QAVMMediaImageProcessor::LinearConvolveMatrixRGBA(unsigned char* pixels, int width, int height, int kernelSize,
                                                          const float* kernel) {
  if (!pixels) return E_FAIL;
  if (width < 1 || height < 1) return S_OK;
  if (!kernel) return E_FAIL;
  const ConvolutionKernel weights(kernelSize, kernel);
  const float sum = weights.sum();
  // Every quotient by an infinite or undefined sum is 0 or not-a-number, and so every byte is 0; so is each quotient
  // of a kernel without weights.
  if (!std::isfinite(sum) || weights.half() < 0) {
    std::memset(pixels, 0, std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    return S_OK;
  }
  qav::ConvolutionSweep(pixels, width, height, weights, sum).run();
  return S_OK;
}

HRESULT QAVMMediaImageProcessor::LinearConvolveMatrix(QAVPixelImage& image, int kernelSize, const float* kernel) {
  if (kernelSize % 2 == 0) return E_FAIL;
  unsigned char* const pixels = image.GetPixelsToModify();
  if (!pixels) return E_FAIL;
  int width = 0, height = 0;
  image.GetSize(width, height);
  if (width < 1 || height < 1) return E_FAIL;
  const QAVPixelImageFormat format = image.GetFormat();
  if (format == L8 || format == LA88 || format == RGB888) return S_OK;
  return format == RGBA8888 ? LinearConvolveMatrixRGBA(pixels, width, height, kernelSize, kernel) : E_FAIL;
}
