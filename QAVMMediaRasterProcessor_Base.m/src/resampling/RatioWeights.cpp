#include "resampling/RatioWeights.h"

#include "resampling/ByteQuanta.h"
#include "resampling/NearestInteger.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

// Why ratios give the defined bits.
//
// Let the weights of a position be w = (m + e) / D with whole m and tiny excesses e, and let M = sum(s m) and
// E = sum(s e) over the samples s. The true sum is (M + E) / D; the definition's, V, differs from it by at most `error`
// below. 255 sum|e| + D error is far below a quarter. So V + 1/2 lies on the same side of every integer as
// (2 M + D) / 2 D, unless 2 M + D is a multiple of 2 D: an exact half. Then it lies on the upper side when E > D error
// and on the lower when E < -D error; in between the definition itself decides. As the test of the sign of E matters
// for exact halves alone, floor((2 M + D - (E < 0)) / 2 D) is the result for all others as well.
//
// E is summed in quanta: e = q quantum + r with whole q, and |sum(s r)| <= 255 sum|r|. A ratio's bound contains both.

namespace qav {
namespace {

using kernels::ByteTaps;

constexpr std::int32_t kMaxParts = 127;
constexpr double kMaxExcess = 0x1p-30;
constexpr double kMaxBound = 0x1p30;
// Beyond it too many halves would be left to the definition.
constexpr std::int32_t kLargestUsefulBound = 1 << 12;
// For what the bounds themselves are rounded by.
constexpr double kSlack = 1.0 + 0x1p-20;

// How far rounding moves a double of at most this magnitude: half a unit of its last place.
double halfUnit(double magnitude) {
  constexpr std::uint64_t kExponent = 0x7FF0000000000000;
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) & kExponent) * 0x1p-53;
}

// How far the definition's sum, and its sum plus a half, are from the true ones.
double definitionError(const ByteTaps& taps) {
  double error = 0.0, sum = 0.0;
  for (const double w : weightsOf(taps)) {
    const double most = 255.0 * std::abs(w) * kSlack;
    sum += most;
    error += halfUnit(most) + (sum > most ? halfUnit(sum) : 0.0);
  }
  return error + halfUnit(sum + 0.5);
}

// weight * parts - whole. Exact: both halves of the weight have room for seven bits more, and the difference has no
// more bits than the weight.
double excessOf(double weight, std::int32_t parts, double whole) {
  const double high = std::bit_cast<double>(std::bit_cast<std::uint64_t>(weight) & ~std::uint64_t{0x7FFFFFF});
  return (high * parts - whole) + (weight - high) * parts;
}

}  // namespace

std::optional<Reciprocal> reciprocalOf(std::int32_t divisor) {
  const int shift = static_cast<int>(std::bit_width(static_cast<std::uint32_t>(divisor - 1))) - 1;
  const std::int64_t one = std::int64_t{1} << (16 + shift), reciprocal = (one + divisor - 1) / divisor;
  const std::int64_t surplus = reciprocal * divisor - one;
  if (reciprocal > 0xFFFF || surplus * 256 * divisor >= one) return {};
  return Reciprocal{divisor, static_cast<std::int32_t>(reciprocal), shift};
}

std::optional<Ratio> ratioOf(const ByteTaps& taps, std::int32_t parts, double largestDigit) {
  double largest = 0.0;
  for (const double w : weightsOf(taps)) {
    const double whole = NearestInteger(w * parts).value();
    if (!(std::abs(w * parts - whole) <= kMaxExcess) || 2.0 * std::abs(whole) > largestDigit) return {};
    const double excess = std::abs(excessOf(w, parts, whole));
    largest = excess > largest ? excess : largest;
  }
  Ratio ratio;
  if (largest == 0.0) return ratio;
  ratio.quantum = largest / largestDigit;
  double rest = 0.0;
  for (const double w : weightsOf(taps)) {
    const double excess = excessOf(w, parts, NearestInteger(w * parts).value());
    rest += std::abs(excess - NearestInteger(excess / ratio.quantum).value() * ratio.quantum);
  }
  const double bound = (255.0 * rest + parts * definitionError(taps)) * kSlack / ratio.quantum;
  ratio.bound = static_cast<std::int32_t>(std::ceil(std::min(bound, kMaxBound))) + 1;
  return ratio;
}

RatioDigits ratioDigits(double weight, std::int32_t parts, const Ratio& ratio) {
  const NearestInteger whole(weight * parts);
  const double excess = excessOf(weight, parts, whole.value());
  return {static_cast<std::int8_t>(2 * whole.integer()),
          static_cast<std::int8_t>(ratio.quantum > 0.0 ? NearestInteger(excess / ratio.quantum).integer() : 0)};
}

std::int32_t commonParts(std::span<const ByteTaps> taps, double largestDigit) {
  const auto haveRatios = [=](std::int32_t parts) {
    return std::all_of(taps.begin(), taps.end(), [=](const ByteTaps& position) {
      const std::optional<Ratio> ratio = ratioOf(position, parts, largestDigit);
      return ratio && (parts % 2 != 0 || ratio->bound <= kLargestUsefulBound);
    });
  };
  for (std::int32_t parts = 2; parts <= kMaxParts; ++parts)
    if (haveRatios(parts)) return reciprocalOf(2 * parts) ? parts : 0;
  return 0;
}

}  // namespace qav
