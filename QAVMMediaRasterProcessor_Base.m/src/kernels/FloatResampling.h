#pragma once

#include "kernels/RowStretch.h"

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// The weights of one output position: weights[k] belongs to source position left + k. No taps: the result is 0.
struct FloatTaps {
  const double* weights = nullptr;
  std::int32_t left = 0;
  std::int32_t count = 0;
};

struct FloatRows {
  const float* const* rows;
  std::size_t count;  ///< 1 to rowsAtOnce
  int channels;       ///< 3 or 4
  std::size_t ahead;  ///< samples from these rows to those that will be asked for next; 0 when nothing is known of them
};

/// Weighted sums of floats, taken in double in the order of the taps and rounded to float. Weights of zero count too:
/// infinite samples and negative zeros show.
struct FloatResamplingKernels {
  std::size_t rowsAtOnce;
  /// Scratch memory in doubles.
  RowStretchShape stretches;
  /// Resamples rows to the positions of some stretches.
  void (*rows)(const FloatRows& in, const FloatTaps* taps, const RowStretch* stretches, std::size_t stretchCount,
               float* const* out, double* scratch);
  /// Samples first to end - 1 of one output row: the weighted sum of as many rows as there are taps.
  void (*columns)(const float* const* rows, std::size_t first, std::size_t end, const FloatTaps& taps, float* out);
};

const FloatResamplingKernels& floatResamplingKernels() noexcept;

}  // namespace qav::kernels
