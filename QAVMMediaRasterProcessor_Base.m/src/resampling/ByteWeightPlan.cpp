#include "resampling/ByteWeightPlan.h"

#include "resampling/ByteQuanta.h"
#include "resampling/NearestInteger.h"
#include "resampling/RatioWeights.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>

namespace qav {
namespace {

using kernels::ByteSum;
using kernels::ByteTaps;
using kernels::FourShape;

constexpr int kSmallestShift = 12;

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

// Weights that one position or several have: simple ratios of sizes give most positions one of a few.
struct Kind {
  std::size_t first = 0;  // of the positions
  WeightSummary summary;
  Quantised quantised;
  ByteSum sum = ByteSum::Exact;
};

bool sameWeights(const ByteTaps& a, const ByteTaps& b) {
  if (a.count != b.count || a.count == 0 || a.weights[0] != b.weights[0]) return a.count == 0 && b.count == 0;
  std::uint64_t different = 0;
  for (std::int32_t t = 0; t < a.count; ++t)
    different |= std::bit_cast<std::uint64_t>(a.weights[t]) ^ std::bit_cast<std::uint64_t>(b.weights[t]);
  return different == 0;
}

class Planner {
 public:
  Planner(ByteWeightPlan& plan, std::size_t wanted, std::vector<std::int32_t>& digits,
          std::vector<std::int32_t>& digitsOfRun, bool fours, int digitBits)
      : plan_(plan),
        wanted_(wanted),
        digits_(digits),
        digitsOfRun_(digitsOfRun),
        fours_(fours),
        digitBits_(digitBits) {}

  void run() {
    findKinds();
    chooseShifts();
    quantiseKinds();
    findRatios();
    chooseSums();
    layGroups();
    writeDigits();
    if (!fours_) return;
    findRun();
    writeDigitsOfRun();
  }

 private:
  int shiftOf(ByteSum sum) const { return plan_.weights.shift[static_cast<int>(sum)]; }

  // Products of two bytes and digits of 7 bits, at most 64 in magnitude, fit 16 bits.
  double largestDigit() const { return digitBits_ == 8 ? 127.0 : 64.0; }
  double largestQuanta() const { return largestDigit() * powerOfTwo(2 * digitBits_); }

  const Kind& kindAt(std::size_t i) const { return kinds_[kindOf_[i]]; }

  void findKinds() {
    kindOf_.resize(plan_.taps.size());
    std::size_t count = 0;
    for (std::size_t i = 0; i < kindOf_.size(); ++i) {
      const std::size_t like = lastLike(i);
      kindOf_[i] = like < i ? kindOf_[like] : count++;
    }
    kinds_.resize(count);
    std::size_t next = 0;
    for (std::size_t i = 0; next < count; ++i) {
      if (kindOf_[i] != next) continue;
      kinds_[next].first = i;
      kinds_[next].summary = summaryOf(plan_.taps[i]);
      ++next;
    }
  }

  // One of the positions before that has the weights of this one; the position itself where there is none.
  std::size_t lastLike(std::size_t i) const {
    constexpr std::size_t kLongestPeriod = 4;
    for (std::size_t back = 1; back <= std::min(i, kLongestPeriod); ++back)
      if (sameWeights(plan_.taps[i], plan_.taps[i - back])) return i - back;
    return i;
  }

  void chooseShifts() {
    double largest = 0.0, sum = 0.0;
    int exactShift = 0;
    for (const Kind& kind : kinds_) {
      const WeightSummary& summary = kind.summary;
      if (!summary.ordinary) continue;
      largest = std::max(largest, summary.largest);
      sum = std::max(sum, summary.sum);
      if (fitsOneDigit(summary, summary.shiftToIntegers)) exactShift = std::max(exactShift, summary.shiftToIntegers);
    }
    int shift = kLargestShift;
    while (shift > kSmallestShift &&
           (largest * powerOfTwo(shift) > largestQuanta() ||
            (255.0 * sum + 2.0) * powerOfTwo(shift) + 255.0 * kMostOrdinaryTaps > 2147483647.0))
      --shift;
    plan_.weights.shift[static_cast<int>(ByteSum::OneDigit)] = std::max(1, exactShift);
    plan_.weights.shift[static_cast<int>(ByteSum::ThreeDigits)] = shift;
  }

  bool fitsOneDigit(const WeightSummary& summary, int shift) const {
    return summary.shiftToIntegers <= std::min(shift, kLargestShift) &&
           summary.largest * powerOfTwo(shift) <= largestDigit();
  }

  void quantiseKinds() {
    const int one = shiftOf(ByteSum::OneDigit), three = shiftOf(ByteSum::ThreeDigits);
    double error = 0.0;
    for (Kind& kind : kinds_) {
      const WeightSummary& summary = kind.summary;
      if (!summary.ordinary || summary.largest * powerOfTwo(three) > largestQuanta()) continue;
      kind.quantised = quantise(plan_.taps[kind.first], summary, three);
      // More doubt than this would not be worth while.
      if (kind.quantised.error > powerOfTwo(three - 8)) continue;
      error = std::max(error, kind.quantised.error);
      kind.sum = fitsOneDigit(summary, one) ? ByteSum::OneDigit : ByteSum::ThreeDigits;
    }
    bound_ = static_cast<std::int32_t>(std::ceil(error)) + 1;
    plan_.weights.doubt = static_cast<std::uint32_t>(2 * bound_) << (32 - three);
  }

  // Positions in the middle show whether the weights are whole numbers of parts; those at the ends often are not.
  void findRatios() {
    constexpr std::size_t kShown = 8;
    const std::size_t count = plan_.taps.size(), middle = count / 2, shown = std::min(kShown, count - middle);
    const auto needsThree = [](const Kind& kind) { return kind.sum == ByteSum::ThreeDigits; };
    bool any = false;
    for (std::size_t i = middle; i < middle + shown; ++i) any = any || needsThree(kindAt(i));
    if (!any) return;
    parts_ = commonParts(std::span(plan_.taps).subspan(middle, shown), largestDigit());
    if (parts_ == 0) return;
    const Reciprocal reciprocal = *reciprocalOf(2 * parts_);
    plan_.weights.divisor = reciprocal.divisor;
    plan_.weights.reciprocal = reciprocal.reciprocal;
    plan_.weights.reciprocalShift = reciprocal.shift;
    ratios_.resize(kinds_.size());
    for (std::size_t k = 0; k < kinds_.size(); ++k) {
      if (kinds_[k].sum == ByteSum::Exact) continue;
      ratios_[k] = ratioOf(plan_.taps[kinds_[k].first], parts_, largestDigit());
      if (ratios_[k] && needsThree(kinds_[k])) kinds_[k].sum = sumOfParts();
    }
  }

  ByteSum sumOfParts() const { return parts_ % 2 == 0 ? ByteSum::Ratio : ByteSum::Parts; }

  // Positions whose digits stand side by side.
  std::size_t beside() const { return fours_ ? 4 : 1; }

  void chooseSums() {
    for (std::size_t first = 0; first < plan_.taps.size(); first += beside()) {
      const std::size_t end = first + beside();
      const ByteSum sum = sumForAll(first, end);
      for (std::size_t i = first; i < end; ++i) choose(sum, i);
    }
  }

  ByteSum sumForAll(std::size_t first, std::size_t end) const {
    bool any[kernels::kByteSums] = {}, haveRatios = true;
    for (std::size_t i = first; i < end; ++i) {
      any[static_cast<int>(kindAt(i).sum)] = true;
      haveRatios = haveRatios && parts_ != 0 && ratios_[kindOf_[i]];
    }
    if (any[static_cast<int>(ByteSum::Exact)]) return ByteSum::Exact;
    if (any[static_cast<int>(ByteSum::ThreeDigits)]) return ByteSum::ThreeDigits;
    if (!any[static_cast<int>(ByteSum::Ratio)] && !any[static_cast<int>(ByteSum::Parts)]) return ByteSum::OneDigit;
    return haveRatios ? sumOfParts() : ByteSum::ThreeDigits;
  }

  void choose(ByteSum sum, std::size_t i) {
    ByteTaps& taps = plan_.taps[i];
    taps.sum = sum;
    if (sum == ByteSum::OneDigit) taps.bias = 1 << (shiftOf(sum) - 1);
    if (sum == ByteSum::ThreeDigits) {
      const Quantised& quantised = kindAt(i).quantised;
      taps.bias = static_cast<std::int32_t>(quantised.start) + (quantised.error > 0.0 ? bound_ : 0);
    }
    if (sum == ByteSum::Parts) taps.bias = parts_;
    if (sum != ByteSum::Ratio) return;
    const Ratio& ratio = *ratios_[kindOf_[i]];
    taps.bias = parts_;
    // Where there is no excess, halves are exact in the definition's sum, too, and go up.
    taps.excessBias = ratio.quantum == 0.0 ? 1 : 0;
    taps.excessBound = ratio.bound;
  }

  void layGroups() {
    for (ByteTaps& taps : plan_.taps) {
      if (taps.sum == ByteSum::Exact) continue;
      if (fours_) taps.firstGroup = taps.left / 4;
      taps.groups = (slotOfFirst(taps) + taps.count + 3) / 4;
    }
    if (!fours_) return;
    for (std::size_t first = 0; first < plan_.taps.size(); first += beside())
      plan_.taps[first].shape = shapeOf(&plan_.taps[first]);
  }

  static FourShape shapeOf(const ByteTaps* four) {
    const auto even = [&](int i) { return four[i].groups == four[0].groups; };
    const auto alike = [&](int i) { return four[i].firstGroup == four[i + 1].firstGroup; };
    if (four[0].groups == 0 || !even(1) || !even(2) || !even(3)) return FourShape::Uneven;
    return alike(0) && alike(2) ? FourShape::Paired : FourShape::Even;
  }

  // Positions in the middle show the period.
  void findRun() {
    using kernels::ByteRun;
    const std::size_t middle = wanted_ / 2;
    for (const std::size_t period : {std::size_t{1}, std::size_t{2}, std::size_t{4}}) {
      if (middle + period >= wanted_) return;
      const std::int32_t step = plan_.taps[middle + period].left - plan_.taps[middle].left;
      std::size_t first = middle, end = middle;
      while (first > 0 && returns(first - 1, period, step)) --first;
      while (returns(end, period, step)) ++end;
      if (end == first) continue;
      layRun(first, end + period, period, step);
      return;
    }
  }

  void layRun(std::size_t first, std::size_t end, std::size_t period, std::int32_t step) {
    kernels::ByteRun& run = plan_.run;
    if (end - first <= kernels::ByteRun::kPositions) return;
    const std::span<const ByteTaps> taps = plan_.taps;
    run.period = period;
    run.step = step;
    for (std::size_t phase = 0; phase < period; ++phase) run.begins[phase] = taps[first + phase].left;
    if (period == 1 && step == 2 && kernels::digitsOf(taps[first].sum) == 1) {
      // Two positions that share what they read, from where fewest cache lines are crossed.
      if (taps[first].left % 4 > 1) ++first;
      run.period = 2;
      run.step = 4;
      run.paired = true;
      run.begins[0] = run.begins[1] = taps[first].left / 4 * 4;
    }
    run.first = first;
    run.end = first + (end - first) / kernels::ByteRun::kPositions * kernels::ByteRun::kPositions;
    for (std::size_t phase = 0; phase < run.period; ++phase) {
      const ByteTaps& position = taps[first + phase];
      run.groups = std::max(run.groups, (position.left - run.begins[phase] + position.count + 3) / 4);
    }
  }

  // Whether the position `period` further on has the same digits `step` further on.
  bool returns(std::size_t i, std::size_t period, std::int32_t step) const {
    if (step < 1 || step > static_cast<std::int32_t>(kernels::ByteRun::kLongestStep) || i + period >= wanted_)
      return false;
    const ByteTaps &taps = plan_.taps[i], &next = plan_.taps[i + period];
    return taps.groups > 0 && taps.sum != ByteSum::Ratio && taps.sum == plan_.taps[i + 1].sum && next.sum == taps.sum &&
           kindOf_[i] == kindOf_[i + period] && next.left - taps.left == step;
  }

  // Where in a group the first tap stands.
  std::int32_t slotOfFirst(const ByteTaps& taps) const { return fours_ ? taps.left % 4 : 0; }

  static std::size_t digitsOf(ByteSum sum) { return static_cast<std::size_t>(kernels::digitsOf(sum)); }
  std::size_t digitsBetweenGroups(const ByteTaps& taps) const { return beside() * digitsOf(taps.sum); }

  // Whether positions have the same digits in the same places as the ones before them.
  bool digitsRepeat(std::size_t first) const {
    if (first < beside()) return false;
    for (std::size_t i = first; i < first + beside(); ++i) {
      const ByteTaps &taps = plan_.taps[i], &before = plan_.taps[i - beside()];
      if (kindOf_[i] != kindOf_[i - beside()] || taps.sum != before.sum || slotOfFirst(taps) != slotOfFirst(before))
        return false;
    }
    return true;
  }

  void writeDigits() {
    std::vector<std::size_t> begins;
    begins.reserve(plan_.taps.size() / beside() + 1);
    std::size_t needed = 0;
    for (std::size_t first = 0; first < plan_.taps.size(); first += beside()) {
      if (digitsRepeat(first)) {
        begins.push_back(begins.back());
        continue;
      }
      begins.push_back(needed);
      std::int32_t groups = 0;
      for (std::size_t i = first; i < first + beside(); ++i) groups = std::max(groups, plan_.taps[i].groups);
      needed += static_cast<std::size_t>(groups) * digitsBetweenGroups(plan_.taps[first]);
    }
    // With room behind the last, for positions without digits.
    digits_.assign(needed + digitsOf(ByteSum::ThreeDigits) * beside(), 0);
    for (std::size_t first = 0; first < plan_.taps.size(); first += beside()) {
      std::int32_t* at = digits_.data() + begins[first / beside()];
      const bool write = !digitsRepeat(first);
      for (std::size_t i = first; i < first + beside(); ++i, at += digitsOf(plan_.taps[first].sum)) {
        ByteTaps& taps = plan_.taps[i];
        taps.digits = at;
        if (write) writeDigitsOf(i, {at, static_cast<std::size_t>(slotOfFirst(taps)), digitsBetweenGroups(taps)});
      }
    }
  }

  void writeDigitsOfRun() {
    kernels::ByteRun& run = plan_.run;
    if (run.first == run.end) return;
    const std::size_t digits = digitsOf(plan_.taps[run.first].sum), between = run.period * digits;
    digitsOfRun_.assign(static_cast<std::size_t>(run.groups) * between, 0);
    for (std::size_t phase = 0; phase < run.period; ++phase)
      writeDigitsOf(run.first + phase,
                    {digitsOfRun_.data() + phase * digits,
                     static_cast<std::size_t>(plan_.taps[run.first + phase].left - run.begins[phase]), between});
    run.digits = digitsOfRun_.data();
  }

  // Where the digits of a position stand: the slot of its first tap in a group, and the way from group to group.
  struct DigitPlaces {
    std::int32_t* first;
    std::size_t slot;
    std::size_t between;
  };

  void writeDigitsOf(std::size_t i, DigitPlaces places) const {
    const ByteTaps& taps = plan_.taps[i];
    if (taps.sum == ByteSum::Ratio || taps.sum == ByteSum::Parts)
      writeRatio(taps, *ratios_[kindOf_[i]], places);
    else if (taps.sum != ByteSum::Exact)
      writeQuanta(taps, places);
  }

  // Calls body(weight, place of its first digit); the others follow four bytes apart.
  template <class Body>
  static void forEachTap(const ByteTaps& taps, DigitPlaces places, Body body) {
    auto* const bytes = reinterpret_cast<std::int8_t*>(places.first);
    std::size_t slot = places.slot;
    for (const double w : weightsOf(taps)) {
      body(w, bytes + slot / 4 * 4 * places.between + slot % 4);
      ++slot;
    }
  }

  void writeRatio(const ByteTaps& taps, const Ratio& ratio, DigitPlaces places) const {
    forEachTap(taps, places, [&](double w, std::int8_t* at) {
      const RatioDigits digits = ratioDigits(w, parts_, ratio);
      at[0] = digits.parts;
      if (taps.sum == ByteSum::Ratio) at[4] = digits.excess;
    });
  }

  void writeQuanta(const ByteTaps& taps, DigitPlaces places) const {
    const double quantum = powerOfTwo(shiftOf(taps.sum));
    const bool three = taps.sum == ByteSum::ThreeDigits;
    forEachTap(taps, places, [&](double w, std::int8_t* at) {
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
  std::size_t wanted_;  // positions that are not there to fill up a four
  std::vector<std::int32_t>& digits_;
  std::vector<std::int32_t>& digitsOfRun_;
  bool fours_;
  int digitBits_;
  std::vector<Kind> kinds_;
  std::vector<std::size_t> kindOf_;           // by position
  std::vector<std::optional<Ratio>> ratios_;  // by kind, when there are parts
  std::int32_t parts_ = 0;
  std::int32_t bound_ = 1;
};

}  // namespace

ByteWeightPlan::ByteWeightPlan(std::span<const QAVMMContribution> entries, Order order, int digitBits) {
  const std::size_t padded = order == Order::Fours ? (entries.size() + 3) / 4 * 4 : entries.size();
  taps.reserve(padded);
  for (const QAVMMContribution& entry : entries) taps.push_back(trimmed(entry));
  while (taps.size() < padded) taps.push_back(taps.back());
  Planner(*this, entries.size(), digits_, digitsOfRun_, order == Order::Fours, digitBits).run();
}

}  // namespace qav
