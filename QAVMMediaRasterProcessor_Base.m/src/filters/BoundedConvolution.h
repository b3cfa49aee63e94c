#pragma once

#include "filters/ConvolutionKernel.h"
#include "kernels/Convolution.h"

#include <array>
#include <memory>
#include <vector>

namespace qav {

/// A kernel's quotients in whole numbers, as kernels::ConvolutionBound says. `bound` points to the other members.
struct BoundedConvolution {
  std::vector<std::int32_t> multiples;  ///< the weights, each divided by the sum of all and rounded
  std::int32_t start = 0;
  kernels::ConvolutionBound bound{};
  std::vector<float> weights;
  std::array<std::uint8_t, 256> flat{};
  std::size_t recomputed = 0;
};

/// Null where too many results would be in doubt. `sum` is the sum of all weights.
std::unique_ptr<BoundedConvolution> boundConvolution(const ConvolutionKernel& kernel, float sum);

}  // namespace qav
