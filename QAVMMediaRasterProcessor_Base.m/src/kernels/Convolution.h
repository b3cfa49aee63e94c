#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// One row of a convolution of RGBA samples held as floats.
struct ConvolutionRow {
  const float* const* rows;     ///< source rows in the kernel's order; sample i's first tap is rows[r][i]
  const float* const* weights;  ///< the weights of each of these rows
  std::size_t rowCount;
  std::size_t taps;   ///< in a row, 4 samples apart
  float weightSum;    ///< that the sums are divided by
  std::size_t count;  ///< of samples. Source rows are readable for kConvolutionSlack samples beyond the last tap
  std::uint8_t* out;
};

inline constexpr std::size_t kConvolutionSlack = 128;

struct ConvolutionKernels {
  /// Samples as floats.
  void (*widen)(const std::uint8_t* bytes, std::size_t count, float* samples);
  /// Products and sums in single precision, tap by tap in order, each rounded. The quotient is truncated and clamped to
  /// 0..255, not-a-number gives 0.
  void (*convolve)(const ConvolutionRow& row);
};

const ConvolutionKernels& convolutionKernels() noexcept;

}  // namespace qav::kernels
