#include "resampling/FloatWeightPlan.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace qav {
namespace {

using kernels::FloatTaps;

// The product of a float's 24 bits and 29 others is a double, unless it is too large or too small for one.
bool multipliesExactly(double weight) {
  constexpr std::uint64_t kBehind29Bits = (std::uint64_t{1} << 24) - 1;
  const double size = std::fabs(weight);
  return weight == 0.0 ||
         (size > 0x1p-800 && size < 0x1p800 && (std::bit_cast<std::uint64_t>(weight) & kBehind29Bits) == 0);
}

FloatTaps tapsOf(const QAVMMContribution& entry) {
  if (entry.left > entry.right) return {};
  const std::int32_t count = entry.right - entry.left + 1;
  return {entry.weights, entry.left, count, std::all_of(entry.weights, entry.weights + count, multipliesExactly)};
}

// No taps are left of zeros alone.
FloatTaps withoutZerosAtEnds(FloatTaps taps) {
  while (taps.count > 0 && taps.weights[taps.count - 1] == 0.0) --taps.count;
  for (; taps.count > 0 && *taps.weights == 0.0; --taps.count) {
    ++taps.weights;
    ++taps.left;
  }
  return taps;
}

bool inOrder(const FloatTaps& a, const FloatTaps& b) { return a.left <= b.left && a.behind() <= b.behind(); }

// All taps, and what is left of them without the zeros.
struct Positions {
  explicit Positions(std::span<const FloatTaps> taps) : all(taps), cut(taps.size()) {
    std::transform(taps.begin(), taps.end(), cut.begin(), withoutZerosAtEnds);
  }
  bool goOn(std::size_t x) const { return inOrder(all[x - 1], all[x]) && inOrder(cut[x - 1], cut[x]); }

  std::span<const FloatTaps> all;
  std::vector<FloatTaps> cut;
};

struct Range {
  std::size_t slots = 0;
  std::size_t first = 0;
  std::size_t end = 0;
  bool exact = false;
};

Range longestRange(const Positions& positions, std::size_t slots, bool exact) {
  const std::vector<FloatTaps>& cut = positions.cut;
  const auto takesPart = [&](std::size_t x, std::size_t first) {
    return cut[x].count > 0 && (positions.all[x].exact || !exact) && (x == first || positions.goOn(x)) &&
           (x - first < slots || cut[x - slots].behind() <= cut[x].left);
  };
  Range longest;
  const std::size_t most = cut.size() - 1;  // see FloatRun
  for (std::size_t first = 0, end; first < most; first = std::max(end, first + 1)) {
    for (end = first; end < most && takesPart(end, first);) ++end;
    const std::size_t count = (end - first) / slots * slots;
    if (count > longest.end - longest.first) longest = {slots, first, first + count, exact};
  }
  return longest;
}

// In operations on vectors, roughly: a sample is widened once for a position of a run, or for each four positions
// that are summed together.
double saving(const Positions& positions, const Range& range) {
  if (range.slots == 0) return 0.0;
  constexpr double kWidening = 6.0;
  constexpr std::size_t kTogether = 4;
  const std::span<const FloatTaps> taps = positions.all;
  double products = 0.0, widened = 0.0;
  for (std::size_t x = range.first; x < range.end; ++x) {
    products += taps[x].count;
    const std::size_t last = std::min(x + kTogether, range.end) - 1;
    widened += kernels::overlapInOrder(&taps[x], last - x + 1)
                   ? (taps[last].behind() - taps[x].left) / static_cast<double>(last - x + 1)
                   : taps[x].count;
  }
  const double sources = taps[range.end - 1].behind() - taps[range.first].left;
  return 2.0 * products + kWidening * widened -
         sources * (static_cast<double>(range.slots) * (range.exact ? 1.0 : 2.0) + kWidening);
}

Range bestRange(const Positions& positions) {
  Range best;
  double most = 0.0;
  for (const std::size_t slots : {2u, 3u, 4u, 6u, 8u}) {
    for (const bool exact : {false, true}) {
      const Range range = longestRange(positions, slots, exact);
      const double saved = saving(positions, range);
      if (saved <= most) continue;
      most = saved;
      best = range;
    }
    if (best.end - best.first > positions.cut.size() / 2) break;  // more slots would only be idle
  }
  return best;
}

}  // namespace

FloatWeightPlan::FloatWeightPlan(std::span<const QAVMMContribution> entries) : taps(entries.size()) {
  std::transform(entries.begin(), entries.end(), taps.begin(), tapsOf);
}

void FloatWeightPlan::addRun() {
  if (taps.empty()) return;
  const Positions positions(taps);
  const auto [slots, first, end, exact] = bestRange(positions);
  if (slots == 0) return;
  run = {slots, first, end, taps[first].left, nullptr, nullptr, exact};
  weightsOfRun_.assign(static_cast<std::size_t>(taps[end - 1].behind() - run.source) * slots, 0.0);
  for (std::size_t x = first; x < end; ++x) {
    const FloatTaps& cut = positions.cut[x];
    double* to = weightsOfRun_.data() + static_cast<std::size_t>(cut.left - run.source) * slots + (x - first) % slots;
    for (std::int32_t t = 0; t < cut.count; ++t, to += slots) *to = cut.weights[t];
  }
  std::int32_t from = run.source;
  for (std::size_t x = first; x < end; ++x) {
    const std::int32_t behind = x + 1 < end ? positions.cut[x].behind() : taps[x].behind();
    // A sum that no position completes would not show samples that are not finite.
    const std::size_t middle = x + slots / 2 - 1;
    turns_.push_back({middle < end ? endOfLone((middle - first) % slots, from, behind) : from, behind});
    from = behind;
  }
  run.weights = weightsOfRun_.data();
  run.turns = turns_.data();
}

std::int32_t FloatWeightPlan::endOfLone(std::size_t middle, std::int32_t from, std::int32_t behind) const {
  const auto isLone = [&](std::int32_t source) {
    const double* const weights = weightsOfRun_.data() + static_cast<std::size_t>(source - run.source) * run.slots;
    for (std::size_t slot = 0; slot < run.slots; ++slot)
      if (slot != middle && weights[slot] != 0.0) return false;
    return true;
  };
  while (from < behind && isLone(from)) ++from;
  return from;
}

}  // namespace qav
