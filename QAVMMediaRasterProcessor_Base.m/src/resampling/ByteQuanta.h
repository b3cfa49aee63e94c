#pragma once

#include "kernels/ByteResampling.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace qav {

/// Weights are written as whole numbers of quanta of 2^-shift with at most this shift.
inline constexpr int kLargestShift = 22;
inline constexpr int kMostOrdinaryTaps = 4096;

constexpr double powerOfTwo(int exponent) { return static_cast<double>(std::int64_t{1} << exponent); }

inline std::span<const double> weightsOf(const kernels::ByteTaps& taps) {
  return {taps.weights, static_cast<std::size_t>(taps.count)};
}

struct WeightSummary {
  double largest = 0.0;  ///< magnitude
  double sum = 0.0;      ///< of magnitudes
  /// The least shift that makes all weights integers; one more than the largest shift when none does.
  int shiftToIntegers = kLargestShift + 1;
  /// Few enough, and neither large nor infinite nor not-a-number.
  bool ordinary = false;
};
WeightSummary summaryOf(const kernels::ByteTaps& taps);

/// What a sum of quanta starts with, and how far from the defined sum it is at most; both in quanta.
struct Quantised {
  double start = 0.0;  ///< a half and what centres the error; for exact weights what keeps their sums clear of doubt
  double error = 0.0;  ///< 0 for exact weights
};
Quantised quantise(const kernels::ByteTaps& taps, const WeightSummary& summary, int shift);

}  // namespace qav
