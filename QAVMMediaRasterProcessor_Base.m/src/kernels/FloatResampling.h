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
  bool exact = true;  ///< the product of any float and any of the weights is a double

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

/// How far a position of a run goes on through the source.
struct FloatTurn {
  /// Before this source position only the slot in the middle of those whose turn comes next has a weight other than 0:
  /// kernels that interpolate do so when they shrink to an odd fraction.
  std::int32_t lone;
  std::int32_t behind;  ///< before this one the sum is complete
};

/// Consecutive positions that take turns: the sum of each stands in one of some slots, that of position x in slot
/// (x - first) % slots, and is complete before the next position of that slot begins. So each source position is read
/// and widened to double once, for all slots. The weights of slots that do not look at it are 0, which changes no sum
/// as long as all samples are finite; rows with others are done again without the run. The last position of a row never
/// belongs to it: pixels are written in vectors that reach into the next one.
struct FloatRun {
  std::size_t slots = 0;  ///< 2, 3, 4, 6 or 8
  std::size_t first = 0;  ///< positions first to end - 1, a multiple of `slots`
  std::size_t end = 0;
  std::int32_t source = 0;           ///< the first source position that any of them looks at
  const double* weights = nullptr;   ///< those of all slots for each source position from there on
  const FloatTurn* turns = nullptr;  ///< of each position; the last one goes on to the last source position
  bool exact = false;                ///< as in FloatTaps

  std::size_t count() const { return end - first; }
};

struct FloatRowPlan {
  const FloatTaps* taps;
  std::size_t width;
  FloatRun run;  ///< may be empty
};

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
  bool takesRuns;  ///< of rows
  /// Resamples rows.
  void (*rows)(const SourceRows<float>& in, const FloatRowPlan& plan, float* const* out);
  /// Samples first to end - 1 of some output rows: the weighted sums of as many source rows as each has taps.
  void (*columns)(const FloatColumns& in, std::size_t first, std::size_t end, float* const* out);
};

const FloatResamplingKernels& floatResamplingKernels() noexcept;

}  // namespace qav::kernels
