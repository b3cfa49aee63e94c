#include <QAVMMediaImageProcessor.h>

#include "PixelMemory.h"
#include "formats/PixelSpan.h"
#include "kernels/GreyConversion.h"

#include <memory>

namespace {

// The first two sum to less than one whole, so white darkens: results that callers rely on.
constexpr qav::kernels::GreyWeights kLuma = {2125, 7154, 465, 10000};
constexpr qav::kernels::GreyWeights kLumaCoarse = {222, 707, 57, 1000};
constexpr qav::kernels::GreyWeights kLumaVideo = {2989, 5866, 1145, 10000};

HRESULT greyRuns(QAVPixelImage& image, QAVMMIGreyType type) {
  if (image.ExpandRuns(0) != 0) return E_FAIL;
  return type == QAVMMIGreyAntialiased ? QAVMMediaImageProcessor::Antialiase(image, 3, nullptr, 1) : S_OK;
}

void convert(const qav::PixelSpan& span, QAVMMIGreyType type, unsigned char* grey) {
  const auto& kernels = qav::kernels::greyConversionKernels();
  switch (type) {
    case QAVMMIGreyGreen:
      return kernels.green(span.bytes, span.pixels, span.channels, grey);
    case QAVMMIGreyAverage:
      return kernels.average(span.bytes, span.pixels, span.channels, grey);
    case QAVMMIGreyLightness:
      return kernels.lightness(span.bytes, span.pixels, span.channels, grey);
    case QAVMMIGreyLumaVideo:
      return kernels.weighted(span.bytes, span.pixels, span.channels, kLumaVideo, grey);
    case QAVMMIGreyLumaCoarse:
      return kernels.weighted(span.bytes, span.pixels, span.channels, kLumaCoarse, grey);
    default:
      return kernels.weighted(span.bytes, span.pixels, span.channels, kLuma, grey);
  }
}

HRESULT greyPixels(QAVPixelImage& image, QAVMMIGreyType type) {
  const qav::PixelSpan span = qav::writablePixels(image);
  if (span.channels < 3 || !span.bytes) return E_FAIL;
  if (static_cast<std::uint32_t>(type) > QAVMMIGreyLumaCoarse) return E_NOTIMPL;
  std::unique_ptr<unsigned char[]> grey(newPixelBuffer(span.pixels));
  convert(span, type, grey.get());
  // The image has the array from here on, even when it fails.
  return image.ResetPixels(span.width, span.height, L8, grey.release(), QAVDeallocatePixelsByImage) == 0 ? S_OK
                                                                                                         : E_FAIL;
}

}  // namespace

HRESULT QAVMMediaImageProcessor::Grey(QAVPixelImage& image, QAVMMIGreyType type, void (*)(float), unsigned char apply) {
  const QAVPixelImageFormat format = image.GetFormat();
  if (format == NoPixelStorage || format == L8 || format == LA88) return E_FAIL;
  if (!apply) return S_OK;
  return format == BitonalRuns ? greyRuns(image, type) : greyPixels(image, type);
}
