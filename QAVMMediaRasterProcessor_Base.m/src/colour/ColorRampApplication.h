#pragma once

#include <QAVMMIColorRamp.h>
#include <QAVPixelImage.h>
#include <QAVResult.h>

namespace qav {

/// Runs the channels of the mask through `ramp`. E_FAIL, and no change, for a format other than 0..3, an image without
/// a writable buffer, or a mask that selects none of the format's channels.
HRESULT ApplyColorRampToImage(QAVPixelImage& image, const QAVMMIColorRamp& ramp, int channels);

/// Runs each channel through a ramp of its own; a null ramp leaves its channel alone. Ramp 0 serves luminance or red,
/// 1 green, 2 blue, 3 alpha. E_FAIL as above, a ramp taking the place of a mask bit.
HRESULT ApplyChannelRampsToImage(QAVPixelImage& image, const QAVMMIColorRamp* ramp0, const QAVMMIColorRamp* ramp1,
                                 const QAVMMIColorRamp* ramp2, const QAVMMIColorRamp* ramp3);

}  // namespace qav
