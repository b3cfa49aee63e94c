#include "resampling/ByteWeightPlan.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <span>

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
// u mod 2^shift < 2T, floor(V / 2^shift) is therefore u >> shift; otherwise the definition itself decides.
//
// Where all e are zero the definition's sum is exact as well (fewer than 53 bits) and nothing needs a bound. All sums
// are multiples of the lowest bit b of the q; then b / 2 in place of T keeps them clear of the doubtful range.

namespace qav {
namespace {

using kernels::ByteSum;
using kernels::ByteTaps;

constexpr int kLargestShift = 22;
constexpr int kSmallestShift = 12;
constexpr int kMaxTaps = 4096;
constexpr double kMaxSumOfMagnitudes = 16.0;
// Three digits of base 128, the first of them at most 64.
constexpr double kMaxQuanta = 64.0 * 128.0 * 128.0;

// Zero weights at either end add nothing to a sum of bytes.
ByteTaps trimmed(const QAVMMContribution& entry) {
  ByteTaps taps;
  int left = entry.left, right = entry.right;
  while (left <= right && entry.weights[left - entry.left] == 0.0) ++left;
  while (left <= right && entry.weights[right - entry.left] == 0.0) --right;
  if (left > right) return taps;
  taps.weights = entry.weights + (left - entry.left);
  taps.left = left;
  taps.count = right - left + 1;
  return taps;
}

std::span<const double> weightsOf(const ByteTaps& taps) { return {taps.weights, static_cast<std::size_t>(taps.count)}; }

struct Magnitudes {
  double largest = 0.0;
  double sum = 0.0;
};

Magnitudes magnitudesOf(const ByteTaps& taps) {
  Magnitudes m;
  for (const double w : weightsOf(taps)) {
    m.largest = std::max(m.largest, std::abs(w));
    m.sum += std::abs(w);
  }
  return m;
}

// False for infinities and not-a-number, too.
bool isOrdinary(const ByteTaps& taps) {
  return taps.count <= kMaxTaps && magnitudesOf(taps).sum <= kMaxSumOfMagnitudes;
}

constexpr double powerOfTwo(int exponent) { return static_cast<double>(std::int64_t{1} << exponent); }

// To nearest, for magnitudes below 2^51.
double rounded(double v) {
  constexpr double kIntegersOnly = 1.5 * 4503599627370496.0;
  return (v + kIntegersOnly) - kIntegersOnly;
}

// The least shift that makes all weights integers; one more than the largest shift when none does.
int shiftToIntegers(const ByteTaps& taps) {
  std::uint32_t bits = 1u << kLargestShift;
  for (const double w : weightsOf(taps)) {
    const double scaled = w * powerOfTwo(kLargestShift);
    if (scaled != rounded(scaled)) return kLargestShift + 1;
    bits |= static_cast<std::uint32_t>(static_cast<std::int32_t>(scaled));
  }
  return kLargestShift - std::countr_zero(bits);
}

// The exact half and more that a sum starts with, and the bound T - 1 on its error; both in quanta.
struct Quantised {
  double start = 0.0;
  double error = 0.0;
};

Quantised quantise(const ByteTaps& taps, int shift) {
  double sumOfErrors = 0.0, magnitudes = 0.0;
  std::uint32_t bits = 1u << (shift - 1);
  Quantised result;
  for (const double w : weightsOf(taps)) {
    const double scaled = w * powerOfTwo(shift), q = rounded(scaled);
    sumOfErrors += scaled - q;
    result.error += std::abs(scaled - q);
    magnitudes += std::abs(scaled);
    bits |= static_cast<std::uint32_t>(static_cast<std::int32_t>(q));
  }
  const double half = powerOfTwo(shift - 1);
  if (result.error == 0.0) {
    result.start = half + static_cast<double>((bits & -bits) / 2);
    return result;
  }
  const double centre = 127.5 * sumOfErrors;
  result.start = half + rounded(centre);
  result.error = 127.5 * result.error + std::abs(centre - rounded(centre)) +
                 255.0 * (taps.count + 2) * magnitudes * 0x1p-52 + 0x1p-20;
  return result;
}

class Planner {
 public:
  Planner(ByteWeightPlan& plan, std::vector<std::int32_t>& digits, bool fours, int largestDigit)
      : plan_(plan), digits_(digits), fours_(fours), largestDigit_(largestDigit) {}

  void run() {
    chooseShifts();
    quantiseAll();
    if (fours_) alignFours();
    layGroups();
    writeDigits();
  }

 private:
  int shiftOf(ByteSum sum) const { return plan_.weights.shift[static_cast<int>(sum)]; }

  void chooseShifts() {
    Magnitudes most;
    int exactShift = 0;
    for (const ByteTaps& taps : plan_.taps) {
      if (!isOrdinary(taps)) continue;
      const Magnitudes m = magnitudesOf(taps);
      most.largest = std::max(most.largest, m.largest);
      most.sum = std::max(most.sum, m.sum);
      const int shift = shiftToIntegers(taps);
      if (shift <= kLargestShift && m.largest * powerOfTwo(shift) <= largestDigit_)
        exactShift = std::max(exactShift, shift);
    }
    int shift = kLargestShift;
    while (shift > kSmallestShift && (most.largest * powerOfTwo(shift) > kMaxQuanta ||
                                      (255.0 * most.sum + 2.0) * powerOfTwo(shift) + 255.0 * kMaxTaps > 2147483647.0))
      --shift;
    plan_.weights.shift[static_cast<int>(ByteSum::OneDigit)] = std::max(1, exactShift);
    plan_.weights.shift[static_cast<int>(ByteSum::ThreeDigits)] = shift;
  }

  void quantiseAll() {
    const int one = shiftOf(ByteSum::OneDigit), three = shiftOf(ByteSum::ThreeDigits);
    std::vector<Quantised> quantised(plan_.taps.size());
    double error = 0.0;
    for (std::size_t i = 0; i < plan_.taps.size(); ++i) {
      ByteTaps& taps = plan_.taps[i];
      const double largest = magnitudesOf(taps).largest;
      if (!isOrdinary(taps) || largest * powerOfTwo(three) > kMaxQuanta) continue;
      quantised[i] = quantise(taps, three);
      // More doubt than this would not be worth while.
      if (quantised[i].error > powerOfTwo(three - 8)) continue;
      error = std::max(error, quantised[i].error);
      const bool small = shiftToIntegers(taps) <= one && largest * powerOfTwo(one) <= largestDigit_;
      taps.sum = small ? ByteSum::OneDigit : ByteSum::ThreeDigits;
    }
    bound_ = static_cast<std::int32_t>(std::ceil(error)) + 1;
    plan_.weights.doubt = static_cast<std::uint32_t>(2 * bound_) << (32 - three);
    for (std::size_t i = 0; i < plan_.taps.size(); ++i)
      plan_.taps[i].bias = static_cast<std::int32_t>(quantised[i].start) + (quantised[i].error > 0.0 ? bound_ : 0);
  }

  void alignFours() {
    for (std::size_t first = 0; first < plan_.taps.size(); first += 4) {
      const auto four = std::span(plan_.taps).subspan(first, std::min<std::size_t>(4, plan_.taps.size() - first));
      const auto any = [&](ByteSum sum) {
        return std::any_of(four.begin(), four.end(), [=](const ByteTaps& taps) { return taps.sum == sum; });
      };
      const ByteSum common = any(ByteSum::Exact)         ? ByteSum::Exact
                             : any(ByteSum::ThreeDigits) ? ByteSum::ThreeDigits
                                                         : ByteSum::OneDigit;
      for (ByteTaps& taps : four) taps.sum = common;
    }
  }

  void layGroups() {
    for (ByteTaps& taps : plan_.taps) {
      if (taps.sum == ByteSum::Exact) continue;
      if (fours_) taps.firstGroup = taps.left / 4;
      taps.groups = ((fours_ ? taps.left % 4 : 0) + taps.count + 3) / 4;
      plan_.weights.maxGroups = std::max(plan_.weights.maxGroups, taps.groups);
    }
  }

  static std::size_t digitsOf(ByteSum sum) { return sum == ByteSum::OneDigit ? 1 : 3; }

  void writeDigits() {
    std::size_t needed = 0;
    for (const ByteTaps& taps : plan_.taps) needed += static_cast<std::size_t>(taps.groups) * digitsOf(taps.sum);
    digits_.assign(needed, 0);
    std::int32_t* at = digits_.data();
    for (ByteTaps& taps : plan_.taps) {
      if (taps.sum == ByteSum::Exact) continue;
      if (taps.sum == ByteSum::OneDigit) taps.bias = 1 << (shiftOf(taps.sum) - 1);
      taps.digits = at;
      for (std::int32_t t = 0; t < taps.count; ++t) writeTap(taps, t, at);
      at += static_cast<std::size_t>(taps.groups) * digitsOf(taps.sum);
    }
  }

  void writeTap(const ByteTaps& taps, std::int32_t tap, std::int32_t* at) const {
    const auto slot = static_cast<std::size_t>(tap + (fours_ ? taps.left % 4 : 0));
    const std::size_t count = digitsOf(taps.sum);
    auto quanta = static_cast<std::int32_t>(rounded(taps.weights[tap] * powerOfTwo(shiftOf(taps.sum))));
    auto* const bytes = reinterpret_cast<std::int8_t*>(at + slot / 4 * count);
    for (std::size_t d = count; d-- > 1;) {
      const std::int32_t digit = ((quanta + 64) & 127) - 64;
      bytes[4 * d + slot % 4] = static_cast<std::int8_t>(digit);
      quanta = (quanta - digit) / 128;
    }
    bytes[slot % 4] = static_cast<std::int8_t>(quanta);
  }

  ByteWeightPlan& plan_;
  std::vector<std::int32_t>& digits_;
  bool fours_;
  int largestDigit_;
  std::int32_t bound_ = 1;
};

}  // namespace

ByteWeightPlan::ByteWeightPlan(const QAVMMWeightsTable& table, Order order, int largestDigit) {
  const std::size_t count = static_cast<std::size_t>(std::max(0, table.count));
  taps.reserve(count);
  for (std::size_t i = 0; i < count; ++i) taps.push_back(trimmed(table.contributions[i]));
  Planner(*this, digits_, order == Order::Fours, largestDigit).run();
}

}  // namespace qav
