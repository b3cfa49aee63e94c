#pragma once

#include "kernels/RowFilter.h"

namespace qav::kernels {

/// The fixed 3x3 kernels, in integers that give the bits of the exact sum of the nine products with the
/// single-precision weights, truncated and clamped to 0..255. Weights are given as corner, edge, centre.
struct Kernel3x3Kernels {
  RowFilter box;             ///< 1/9 all over
  RowFilter light;           ///< 0.1, 0.1, 0.2
  RowFilter gauss;           ///< 1/16, 1/8, 1/4
  RowFilter centre;          ///< 1/16, 1/16, 1/2
  RowFilter sharpenLight;    ///< 0, -1/16, 5/4
  RowFilter sharpenMedium;   ///< 0, -1/6, 5/3
  RowFilter sharpen;         ///< 0, -1, 5
  RowFilter sharpenCross;    ///< 1, -2, 5
  RowFilter sharpenStrong;   ///< -1, -1, 9
  RowFilter laplace;         ///< 1/sqrt(2), 1, -(4 + 4/sqrt(2))
  RowFilter sobelRows;       ///< rows 1 2 1, 0 0 0, -1 -2 -1
  RowFilter sobelColumns;    ///< rows -1 0 1, -2 0 2, -1 0 1
  RowFilter prewittRows;     ///< rows 1 1 1, 0 0 0, -1 -1 -1
  RowFilter prewittColumns;  ///< rows 1 0 -1, all three
};

const Kernel3x3Kernels& kernel3x3Kernels() noexcept;

}  // namespace qav::kernels
