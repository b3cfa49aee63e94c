#pragma once

#include "filters/BoundedConvolution.h"

#include <vector>

namespace qav {

/// How a kernel of the caller's is best run so that every byte comes out as from single-precision sums tap by tap.
struct ConvolutionPlan {
  const kernels::ConvolutionArithmetic* arithmetic;
  kernels::ConvolutionQuotient quotient;
  std::vector<std::uint32_t> weights;  ///< (2 reachY + 1) rows of lanes
  std::size_t weightStride;
  std::unique_ptr<BoundedConvolution> bounded;  ///< null where the quotient is that of the sum
};

/// Whether plans may be bounded ones.
enum class Bounding { No, Yes };

/// `reachX` and `reachY` are how far taps may lie from a pixel, at most the kernel's half; taps beyond are left out.
/// `sum` is the sum of all weights and must be finite.
ConvolutionPlan planConvolution(const ConvolutionKernel& kernel, float sum, std::int64_t reachX, std::int64_t reachY,
                                Bounding bounding);

}  // namespace qav
