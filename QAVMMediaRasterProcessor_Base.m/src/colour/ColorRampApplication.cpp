#include "colour/ColorRampApplication.h"

#include "formats/PixelSpan.h"
#include "kernels/TableLookup.h"

#include <QAVMMediaImageFormat.h>

namespace qav {
namespace {

// The mask's channels by their position in a pixel, as bits from 0.
unsigned selectedChannels(QAVPixelImageFormat format, int mask) {
  const auto bits = static_cast<unsigned>(mask);
  switch (format) {
    case L8:
      return bits & 1u;
    case LA88:
      return (bits & 1u) | (bits >> 3 & 2u);
    case RGB888:
      return bits >> 1 & 7u;
    case RGBA8888:
      return bits >> 1 & 15u;
    default:
      return 0;
  }
}

}  // namespace

HRESULT ApplyColorRampToImage(QAVPixelImage& image, const QAVMMIColorRamp& ramp, int channels) {
  const PixelSpan span = writablePixels(image);
  const unsigned selected = selectedChannels(span.format, channels);
  if (!span.bytes || selected == 0) return E_FAIL;
  const auto& kernels = kernels::tableLookupKernels();
  if (selected == (1u << span.channels) - 1u)
    kernels.mapBytes(span.bytes, span.pixels * static_cast<std::size_t>(span.channels), ramp.GetTable());
  else
    kernels.mapSelected(span.bytes, span.pixels, span.channels, selected, ramp.GetTable());
  return S_OK;
}

HRESULT ApplyChannelRampsToImage(QAVPixelImage& image, const QAVMMIColorRamp* ramp0, const QAVMMIColorRamp* ramp1,
                                 const QAVMMIColorRamp* ramp2, const QAVMMIColorRamp* ramp3) {
  const PixelSpan span = writablePixels(image);
  if (!span.bytes) return E_FAIL;
  const QAVMMIColorRamp* const ramps[4] = {ramp0, span.channels == 2 ? ramp3 : ramp1, ramp2, ramp3};
  const unsigned char* tables[4] = {};
  bool any = false;
  for (int k = 0; k < span.channels; ++k) {
    if (ramps[k]) tables[k] = ramps[k]->GetTable();
    any = any || ramps[k];
  }
  if (!any) return E_FAIL;
  const auto& kernels = kernels::tableLookupKernels();
  if (span.channels == 1)
    kernels.mapBytes(span.bytes, span.pixels, tables[0]);
  else
    kernels.mapEach(span.bytes, span.pixels, span.channels, tables);
  return S_OK;
}

}  // namespace qav
