#include "resampling/ByteQuanta.h"

#include "resampling/NearestInteger.h"

#include <bit>
#include <cmath>

// Why the integer sums give the defined bits.
//
// Let W be the weights of a position times 2^shift, q their nearest integers, e = W - q, and s the samples, 0..255.
// The true sum is sum(s W) = sum(s q) + sum((s - 127.5) e) + 127.5 sum(e), so with C = 127.5 sum(e)
//
//     |sum(s W) - (sum(s q) + C)| <= 127.5 sum|e|.
//
// The definition takes its sum in double: n products and n additions, each with a relative error of at most 2^-53, and
// one addition of a half, which put it within (n + 2) 255 sum|W| 2^-53 (times 1 + a few 2^-53) of the true sum. Let T
// be an integer that is at least one more than both bounds and the rounding of C together. With
// u = sum(s q) + round(C) + 2^(shift - 1) + T the definition's rounded value V, in quanta, obeys u - 2T < V < u. Unless
// u mod 2^shift < 2T, floor(V / 2^shift) is therefore u >> shift; otherwise the definition itself decides. (`error` is
// T - 1.)
//
// Where all e are zero the definition's sum is exact as well (fewer than 53 bits) and nothing needs a bound. All sums
// are multiples of the lowest bit b of the q; then b / 2 in place of T keeps them clear of the doubtful range.

namespace qav {

using kernels::ByteTaps;

constexpr double kMaxSumOfMagnitudes = 16.0;

WeightSummary summaryOf(const ByteTaps& taps) {
  double largest = 0.0, sum = 0.0, fractions = 0.0;
  std::uint32_t bits = 1u << kLargestShift;
  for (const double w : weightsOf(taps)) {
    const double m = std::abs(w), scaled = w * powerOfTwo(kLargestShift);
    const NearestInteger quanta(scaled);
    largest = m > largest ? m : largest;
    sum += m;
    fractions += std::abs(scaled - quanta.value());
    bits |= static_cast<std::uint32_t>(quanta.integer());
  }
  WeightSummary summary{largest, sum};
  summary.ordinary = taps.count <= kMostOrdinaryTaps && summary.sum <= kMaxSumOfMagnitudes;
  if (summary.ordinary && fractions == 0.0) summary.shiftToIntegers = kLargestShift - std::countr_zero(bits);
  return summary;
}

Quantised quantise(const ByteTaps& taps, const WeightSummary& summary, int shift) {
  double sumOfErrors = 0.0;
  std::uint32_t bits = 1u << (shift - 1);
  Quantised result;
  for (const double w : weightsOf(taps)) {
    const double scaled = w * powerOfTwo(shift);
    const NearestInteger quanta(scaled);
    const double error = scaled - quanta.value();
    sumOfErrors += error;
    result.error += std::abs(error);
    bits |= static_cast<std::uint32_t>(quanta.integer());
  }
  const double half = powerOfTwo(shift - 1);
  if (result.error == 0.0) {
    result.start = half + static_cast<double>((bits & -bits) / 2);
    return result;
  }
  const double centre = 127.5 * sumOfErrors, nearest = NearestInteger(centre).value();
  result.start = half + nearest;
  result.error = 127.5 * result.error + std::abs(centre - nearest) +
                 255.0 * (taps.count + 2) * summary.sum * powerOfTwo(shift) * 0x1p-52 + 0x1p-20;
  return result;
}

}  // namespace qav
