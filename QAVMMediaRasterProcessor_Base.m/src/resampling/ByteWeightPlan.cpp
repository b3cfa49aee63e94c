#include "resampling/ByteWeightPlan.h"

#include "resampling/NearestInteger.h"
#include "resampling/RatioWeights.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <optional>
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

constexpr double powerOfTwo(int exponent) { return static_cast<double>(std::int64_t{1} << exponent); }

struct Summary {
  double largest = 0.0;  // magnitude
  double sum = 0.0;      // of magnitudes
  // The least shift that makes all weights integers; one more than the largest shift when none does.
  int shiftToIntegers = kLargestShift + 1;
  // Few enough, and neither large nor infinite nor not-a-number.
  bool ordinary = false;
};

Summary summaryOf(const ByteTaps& taps) {
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
  Summary summary{largest, sum};
  summary.ordinary = taps.count <= kMaxTaps && summary.sum <= kMaxSumOfMagnitudes;
  if (summary.ordinary && fractions == 0.0) summary.shiftToIntegers = kLargestShift - std::countr_zero(bits);
  return summary;
}

// The exact half and more that a sum starts with, and the bound T - 1 on its error; both in quanta.
struct Quantised {
  double start = 0.0;
  double error = 0.0;
};

Quantised quantise(const ByteTaps& taps, const Summary& summary, int shift) {
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

class Planner {
 public:
  Planner(ByteWeightPlan& plan, std::vector<std::int32_t>& digits, bool fours, int digitBits)
      : plan_(plan), digits_(digits), fours_(fours), digitBits_(digitBits) {}

  void run() {
    summarise();
    chooseShifts();
    quantiseAll();
    findRatios();
    if (fours_) alignFours();
    layGroups();
    writeDigits();
  }

 private:
  int shiftOf(ByteSum sum) const { return plan_.weights.shift[static_cast<int>(sum)]; }

  // Products of two bytes and digits of 7 bits, at most 64 in magnitude, fit 16 bits.
  double largestDigit() const { return digitBits_ == 8 ? 127.0 : 64.0; }
  double largestQuanta() const { return largestDigit() * powerOfTwo(2 * digitBits_); }

  // Whole ratios of sizes give most positions the weights of the one before.
  bool weighsLikeTheOneBefore(std::size_t i) const {
    return i > 0 && std::ranges::equal(weightsOf(plan_.taps[i]), weightsOf(plan_.taps[i - 1]));
  }

  void summarise() {
    summaries_.reserve(plan_.taps.size());
    for (std::size_t i = 0; i < plan_.taps.size(); ++i) {
      like_.push_back(weighsLikeTheOneBefore(i));
      summaries_.push_back(like_[i] ? summaries_[i - 1] : summaryOf(plan_.taps[i]));
    }
  }

  void chooseShifts() {
    double largest = 0.0, sum = 0.0;
    int exactShift = 0;
    for (const Summary& summary : summaries_) {
      if (!summary.ordinary) continue;
      largest = std::max(largest, summary.largest);
      sum = std::max(sum, summary.sum);
      if (fitsOneDigit(summary, summary.shiftToIntegers)) exactShift = std::max(exactShift, summary.shiftToIntegers);
    }
    int shift = kLargestShift;
    while (shift > kSmallestShift && (largest * powerOfTwo(shift) > largestQuanta() ||
                                      (255.0 * sum + 2.0) * powerOfTwo(shift) + 255.0 * kMaxTaps > 2147483647.0))
      --shift;
    plan_.weights.shift[static_cast<int>(ByteSum::OneDigit)] = std::max(1, exactShift);
    plan_.weights.shift[static_cast<int>(ByteSum::ThreeDigits)] = shift;
  }

  bool fitsOneDigit(const Summary& summary, int shift) const {
    return summary.shiftToIntegers <= std::min(shift, kLargestShift) &&
           summary.largest * powerOfTwo(shift) <= largestDigit();
  }

  void quantiseAll() {
    const int one = shiftOf(ByteSum::OneDigit), three = shiftOf(ByteSum::ThreeDigits);
    std::vector<Quantised> quantised(plan_.taps.size());
    double error = 0.0;
    for (std::size_t i = 0; i < plan_.taps.size(); ++i) {
      const Summary& summary = summaries_[i];
      ByteTaps& taps = plan_.taps[i];
      if (!summary.ordinary || summary.largest * powerOfTwo(three) > largestQuanta()) continue;
      quantised[i] = like_[i] ? quantised[i - 1] : quantise(taps, summary, three);
      // More doubt than this would not be worth while.
      if (quantised[i].error > powerOfTwo(three - 8)) continue;
      error = std::max(error, quantised[i].error);
      taps.sum = fitsOneDigit(summary, one) ? ByteSum::OneDigit : ByteSum::ThreeDigits;
    }
    bound_ = static_cast<std::int32_t>(std::ceil(error)) + 1;
    plan_.weights.doubt = static_cast<std::uint32_t>(2 * bound_) << (32 - three);
    for (std::size_t i = 0; i < plan_.taps.size(); ++i)
      plan_.taps[i].bias = static_cast<std::int32_t>(quantised[i].start) + (quantised[i].error > 0.0 ? bound_ : 0);
  }

  // Positions in the middle show whether the weights are whole numbers of parts; those at the ends often are not.
  void findRatios() {
    constexpr std::size_t kShown = 8;
    const std::span<ByteTaps> all = plan_.taps;
    const std::span<ByteTaps> shown = all.subspan(all.size() / 2, std::min(kShown, all.size() - all.size() / 2));
    const auto needsThree = [](const ByteTaps& taps) { return taps.sum == ByteSum::ThreeDigits; };
    ratios_.resize(all.size());
    if (std::none_of(shown.begin(), shown.end(), needsThree)) return;
    parts_ = partsRichInHalves(shown, largestDigit());
    if (parts_ == 0) return;
    const Reciprocal reciprocal = *reciprocalOf(2 * parts_);
    plan_.weights.divisor = reciprocal.divisor;
    plan_.weights.reciprocal = reciprocal.reciprocal;
    plan_.weights.reciprocalShift = reciprocal.shift;
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (all[i].sum == ByteSum::Exact) continue;
      ratios_[i] = ratioOf(all[i], parts_, largestDigit());
      if (ratios_[i] && all[i].sum == ByteSum::ThreeDigits) all[i].sum = ByteSum::Ratio;
    }
  }

  void alignFours() {
    for (std::size_t first = 0; first < plan_.taps.size(); first += 4) {
      const std::size_t count = std::min<std::size_t>(4, plan_.taps.size() - first);
      const auto four = std::span(plan_.taps).subspan(first, count);
      const auto ratios = std::span(ratios_).subspan(first, count);
      const auto any = [&](ByteSum sum) {
        return std::any_of(four.begin(), four.end(), [=](const ByteTaps& taps) { return taps.sum == sum; });
      };
      const bool haveRatios = std::all_of(ratios.begin(), ratios.end(), [](const auto& ratio) { return !!ratio; });
      const ByteSum common = any(ByteSum::Exact)         ? ByteSum::Exact
                             : any(ByteSum::ThreeDigits) ? ByteSum::ThreeDigits
                             : !any(ByteSum::Ratio)      ? ByteSum::OneDigit
                             : haveRatios                ? ByteSum::Ratio
                                                         : ByteSum::ThreeDigits;
      for (ByteTaps& taps : four) taps.sum = common;
    }
  }

  void layGroups() {
    for (ByteTaps& taps : plan_.taps) {
      if (taps.sum == ByteSum::Exact) continue;
      if (fours_) taps.firstGroup = taps.left / 4;
      taps.groups = ((fours_ ? taps.left % 4 : 0) + taps.count + 3) / 4;
    }
  }

  static std::size_t digitsOf(ByteSum sum) { return static_cast<std::size_t>(sum); }

  // Positions whose digits stand side by side.
  std::size_t beside() const { return fours_ ? 4 : 1; }
  std::size_t digitsBetweenGroups(const ByteTaps& taps) const { return beside() * digitsOf(taps.sum); }

  void writeDigits() {
    std::vector<std::size_t> begins;
    std::size_t needed = 0;
    for (std::size_t first = 0; first < plan_.taps.size(); first += beside()) {
      const auto together = std::span(plan_.taps).subspan(first, std::min(beside(), plan_.taps.size() - first));
      const std::int32_t groups = std::ranges::max(together, {}, &ByteTaps::groups).groups;
      begins.push_back(needed);
      needed += static_cast<std::size_t>(groups) * digitsBetweenGroups(together[0]);
    }
    // With room behind the last, for positions without digits.
    digits_.assign(needed + digitsOf(ByteSum::ThreeDigits) * beside(), 0);
    for (std::size_t i = 0; i < plan_.taps.size(); ++i) {
      ByteTaps& taps = plan_.taps[i];
      if (taps.sum == ByteSum::Exact) continue;
      std::int32_t* const at = digits_.data() + begins[i / beside()] + i % beside() * digitsOf(taps.sum);
      taps.digits = at;
      if (taps.sum == ByteSum::Ratio)
        writeRatio(taps, *ratios_[i], reinterpret_cast<std::int8_t*>(at));
      else
        writeQuanta(taps, reinterpret_cast<std::int8_t*>(at));
    }
  }

  // Calls body(weight, place of its first digit); the others follow four bytes apart.
  template <class Body>
  void forEachTap(const ByteTaps& taps, std::int8_t* bytes, Body body) const {
    auto slot = static_cast<std::size_t>(fours_ ? taps.left % 4 : 0);
    for (const double w : weightsOf(taps)) {
      body(w, bytes + slot / 4 * 4 * digitsBetweenGroups(taps) + slot % 4);
      ++slot;
    }
  }

  void writeRatio(ByteTaps& taps, const Ratio& ratio, std::int8_t* bytes) const {
    taps.bias = parts_;
    // Where there is no excess, halves are exact in the definition's sum, too, and go up.
    taps.excessBias = ratio.quantum == 0.0 ? 1 : 0;
    taps.excessBound = ratio.bound;
    forEachTap(taps, bytes, [&](double w, std::int8_t* at) {
      const RatioDigits digits = ratioDigits(w, parts_, ratio);
      at[0] = digits.parts;
      at[4] = digits.excess;
    });
  }

  void writeQuanta(ByteTaps& taps, std::int8_t* bytes) const {
    const double quantum = powerOfTwo(shiftOf(taps.sum));
    const bool three = taps.sum == ByteSum::ThreeDigits;
    if (!three) taps.bias = 1 << (shiftOf(taps.sum) - 1);
    forEachTap(taps, bytes, [&](double w, std::int8_t* at) {
      std::int32_t quanta = NearestInteger(w * quantum).integer();
      if (three) {
        at[8] = takeDigit(quanta);
        at[4] = takeDigit(quanta);
      }
      at[0] = static_cast<std::int8_t>(quanta);
    });
  }

  // Splits off the lowest digit, which lies around 0.
  std::int8_t takeDigit(std::int32_t& quanta) const {
    const std::int32_t base = 1 << digitBits_, digit = ((quanta + base / 2) & (base - 1)) - base / 2;
    quanta = (quanta - digit) >> digitBits_;
    return static_cast<std::int8_t>(digit);
  }

  ByteWeightPlan& plan_;
  std::vector<std::int32_t>& digits_;
  bool fours_;
  int digitBits_;
  std::vector<bool> like_;
  std::vector<Summary> summaries_;
  std::vector<std::optional<Ratio>> ratios_;
  std::int32_t parts_ = 0;
  std::int32_t bound_ = 1;
};

}  // namespace

ByteWeightPlan::ByteWeightPlan(std::span<const QAVMMContribution> entries, Order order, int digitBits) {
  taps.reserve(entries.size());
  for (const QAVMMContribution& entry : entries) taps.push_back(trimmed(entry));
  Planner(*this, digits_, order == Order::Fours, digitBits).run();
}

}  // namespace qav
