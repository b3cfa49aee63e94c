#pragma once

#include "kernels/SourceRows.h"

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// The weights of one output position: weights[k] belongs to source position left + k. No taps: the result is 0.
struct FloatTaps {
  const double* weights = nullptr;
  std::int32_t left = 0;
  std::int32_t count = 0;

  std::int32_t behind() const { return left + count; }
};

/// Whether consecutive positions look at sources that begin and end one after the other and have one in common, so
/// that they can be summed together.
inline bool overlapInOrder(const FloatTaps* taps, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (taps[i].count <= 0 || taps[i].left >= taps[0].behind()) return false;
    if (i > 0 && (taps[i].left < taps[i - 1].left || taps[i].behind() < taps[i - 1].behind())) return false;
  }
  return true;
}

struct FloatColumns {
  const float* const* rows;  ///< rows[i] is source row taps[0].left + i
  const FloatTaps* taps;
  std::size_t count;  ///< output rows: 1, or outputsTogether that overlap in order
};

/// Weighted sums of floats, taken in double in the order of the taps and rounded to float. Weights of zero count too:
/// infinite samples and negative zeros show.
struct FloatResamplingKernels {
  std::size_t rowsAtOnce;  ///< the most that `rows` takes
  std::size_t outputsTogether;
  /// Resamples rows to `width` positions.
  void (*rows)(const SourceRows<float>& in, const FloatTaps* taps, std::size_t width, float* const* out);
  /// Samples first to end - 1 of some output rows: the weighted sums of as many source rows as each has taps.
  void (*columns)(const FloatColumns& in, std::size_t first, std::size_t end, float* const* out);
};

const FloatResamplingKernels& floatResamplingKernels() noexcept;

}  // namespace qav::kernels
