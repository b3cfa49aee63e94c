#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// The weights of one output position: weights[k] belongs to source position left + k. No taps: the result is 0.
struct FloatTaps {
  const double* weights = nullptr;
  std::int32_t left = 0;
  std::int32_t count = 0;
};

/// Weighted sums of floats, taken in double in the order of the taps and rounded to float. Weights of zero count too:
/// infinite samples and negative zeros show.
struct FloatResamplingKernels {
  std::size_t rowsAtOnce;
  /// Doubles of scratch memory that `rows` takes for rows of that many pixels.
  std::size_t (*rowScratch)(std::size_t pixels);
  /// Resamples 1 to rowsAtOnce rows of `pixels` pixels of 3 or 4 channels to `count` pixels.
  void (*rows)(const float* const* in, std::size_t rowCount, std::size_t pixels, int channels, const FloatTaps* taps,
               std::size_t count, float* const* out, double* scratch);
  /// One output row: the weighted sum of as many rows as there are taps.
  void (*columns)(const float* const* rows, std::size_t samples, const FloatTaps& taps, float* out);
};

const FloatResamplingKernels& floatResamplingKernels() noexcept;

}  // namespace qav::kernels
