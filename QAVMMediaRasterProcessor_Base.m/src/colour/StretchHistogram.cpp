#include <QAVMMIColorRamp.h>
#include <QAVMMediaImageProcessor.h>

#include "colour/ColorRampApplication.h"
#include "formats/PixelSpan.h"
#include "kernels/ChannelExtremes.h"

namespace {

float fraction(std::uint8_t sample) { return static_cast<float>(sample) / 255.0f; }

}  // namespace

HRESULT QAVMMediaImageProcessor::StretchHistogram(QAVPixelImage& image, int channels, void (*)(float),
                                                  unsigned char apply) {
  if (!apply) return S_OK;
  const qav::PixelSpan span = qav::writablePixels(image);
  if (!span.bytes) return E_FAIL;
  std::uint8_t minima[4], maxima[4];
  qav::kernels::channelExtremesKernels().find(span.bytes, span.pixels, span.channels, minima, maxima);
  QAVMMIColorRamp ramps[4];
  for (int k = 0; k < span.channels; ++k) ramps[k].ApplyStretch(fraction(minima[k]), fraction(maxima[k]));
  if (span.format == L8) return qav::ApplyColorRampToImage(image, ramps[0], channels);
  const auto chosen = [&](int channel, int position) { return channels & channel ? &ramps[position] : nullptr; };
  if (span.format == LA88)
    return qav::ApplyChannelRampsToImage(image, chosen(QAVMMIChannelLuminance, 0), nullptr, nullptr,
                                         chosen(QAVMMIChannelAlpha, 1));
  return qav::ApplyChannelRampsToImage(image, chosen(QAVMMIChannelRed, 0), chosen(QAVMMIChannelGreen, 1),
                                       chosen(QAVMMIChannelBlue, 2),
                                       span.format == RGBA8888 ? chosen(QAVMMIChannelAlpha, 3) : nullptr);
}
