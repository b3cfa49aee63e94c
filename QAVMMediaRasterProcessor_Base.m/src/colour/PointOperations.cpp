#include <QAVMMIColorRamp.h>
#include <QAVMMediaImageProcessor.h>

#include "colour/ColorRampApplication.h"
#include "formats/PixelSpan.h"

using qav::ApplyChannelRampsToImage;
using qav::ApplyColorRampToImage;

namespace {

HRESULT acceptsFormat(const QAVPixelImage& image) {
  const QAVPixelImageFormat format = image.GetFormat();
  return format == BitonalRuns || format == NoPixelStorage ? E_FAIL : S_OK;
}

template <class BuildRamp>
HRESULT applyRamp(QAVPixelImage& image, int channels, BuildRamp build) {
  QAVMMIColorRamp ramp;
  build(ramp);
  return ApplyColorRampToImage(image, ramp, channels);
}

}  // namespace

HRESULT QAVMMediaImageProcessor::Brightness(QAVPixelImage& image, float b, int channels, void (*)(float),
                                            unsigned char apply) {
  if (!apply) return acceptsFormat(image);
  if (b == 0.0f) return S_OK;
  return applyRamp(image, channels, [=](QAVMMIColorRamp& ramp) { ramp.ApplyBrightness(b); });
}

HRESULT QAVMMediaImageProcessor::Contrast(QAVPixelImage& image, float c, int channels, void (*)(float),
                                          unsigned char apply) {
  if (!apply) return acceptsFormat(image);
  if (c == 0.0f) return S_OK;
  return applyRamp(image, channels, [=](QAVMMIColorRamp& ramp) { ramp.ApplyContrast(c); });
}

HRESULT QAVMMediaImageProcessor::Gamma(QAVPixelImage& image, float g, int channels, void (*)(float),
                                       unsigned char apply) {
  if (!apply) return acceptsFormat(image);
  if (g == 1.0f) return S_OK;
  return applyRamp(image, channels, [=](QAVMMIColorRamp& ramp) { ramp.ApplyGamma(g); });
}

HRESULT QAVMMediaImageProcessor::Negative(QAVPixelImage& image, int channels, void (*)(float), unsigned char apply) {
  if (!apply) return acceptsFormat(image);
  return applyRamp(image, channels, [](QAVMMIColorRamp& ramp) { ramp.ApplyNegative(); });
}

HRESULT QAVMMediaImageProcessor::Solarize(QAVPixelImage& image, float t, int channels, void (*)(float),
                                          unsigned char apply) {
  if (!apply) return acceptsFormat(image);
  return applyRamp(image, channels, [=](QAVMMIColorRamp& ramp) { ramp.ApplySolarize(t); });
}

HRESULT QAVMMediaImageProcessor::Posterize(QAVPixelImage& image, unsigned int n, int channels, void (*)(float),
                                           unsigned char apply) {
  if (!apply) return acceptsFormat(image);
  // 255 levels are every level there is; the ramp itself takes 2 to 254.
  if (n == 255) return S_OK;
  if (n - 2u > 253u) return E_FAIL;
  return applyRamp(image, channels, [=](QAVMMIColorRamp& ramp) { ramp.ApplyPosterize(n); });
}

HRESULT QAVMMediaImageProcessor::AdjustColor(QAVPixelImage& image, float b, float c, float g, int channels,
                                             void (*)(float), unsigned char apply) {
  if (!apply) return acceptsFormat(image);
  if (b == 0.0f && c == 0.0f && g == 1.0f) return S_OK;
  return applyRamp(image, channels, [=](QAVMMIColorRamp& ramp) {
    ramp.ApplyBrightness(b);
    ramp.ApplyContrast(c);
    ramp.ApplyGamma(g);
  });
}

HRESULT QAVMMediaImageProcessor::Balance(QAVPixelImage& image, float r, float g, float b, void (*)(float),
                                         unsigned char apply) {
  const QAVPixelImageFormat format = image.GetFormat();
  if ((format != RGB888 && format != RGBA8888) || !image.GetPixelsToModify()) return E_FAIL;
  if (!apply) return S_OK;
  QAVMMIColorRamp red, green, blue;
  red.ApplyBrightness(r);
  green.ApplyBrightness(g);
  blue.ApplyBrightness(b);
  return ApplyChannelRampsToImage(image, &red, &green, &blue, nullptr);
}
