#pragma once

#include "kernels/RowFilter.h"

namespace qav::kernels {

/// Gradient magnitudes: the sum of two absolute responses, at most 255. All in integers but the isotropic one, whose
/// terms are added in single precision from left to right.
struct GradientKernels {
  RowFilter sobel;
  RowFilter prewitt;
  RowFilter isotropic;
  RowFilter prewittCompass;
  RowFilter kirsch;
  RowFilter roberts;
};

const GradientKernels& gradientKernels() noexcept;

}  // namespace qav::kernels
