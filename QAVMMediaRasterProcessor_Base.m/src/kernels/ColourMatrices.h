#pragma once

namespace qav {

/// Linear sRGB to CIE XYZ (D65), row by row.
inline constexpr double kRgbToXyz[9] = {0.4124564, 0.3575761, 0.1804375, 0.2126729, 0.7151522,
                                        0.0721750, 0.0193339, 0.1191920, 0.9503041};
/// Its inverse, for callers that go back. The comparison itself does not.
inline constexpr double kXyzToRgb[9] = {3.2404542, -1.5371385, -0.4985314, -0.9692660, 1.8760108,
                                        0.0415560, 0.0556434,  -0.2040259, 1.0572252};

}  // namespace qav
