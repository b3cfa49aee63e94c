#include "comparison/AscendingOrder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <utility>

namespace qav {
namespace {

// Doubles of 0 or more are in the order of their bit patterns. A radix sort by the leading 33 of the bits in which they
// differ, 11 at a time, leaves hardly anything out of order.
constexpr int kDigitBits = 11, kDigits = 3;
constexpr std::size_t kDigitValues = std::size_t{1} << kDigitBits;
constexpr std::size_t kWorthwhile = 2000;

struct Keys {
  explicit Keys(std::span<const double> values) {
    std::uint64_t most = 0;
    least = std::numeric_limits<std::uint64_t>::max();
    for (const double value : values) {
      const auto bits = std::bit_cast<std::uint64_t>(value);
      least = std::min(least, bits);
      most = std::max(most, bits);
    }
    shift = std::max(0, static_cast<int>(std::bit_width(most - least)) - kDigits * kDigitBits);
  }
  std::uint64_t LeadingBits(double value) const { return (std::bit_cast<std::uint64_t>(value) - least) >> shift; }
  std::size_t Digit(double value, int digit) const {
    return (LeadingBits(value) >> (digit * kDigitBits)) % kDigitValues;
  }

  std::uint64_t least;
  int shift;
};

using Places = std::array<std::size_t, kDigitValues>;

// For each digit, where the values with each of its values begin.
std::array<Places, kDigits> placesOf(std::span<const double> values, const Keys& keys) {
  std::array<Places, kDigits> places{};
  for (const double value : values)
    for (int digit = 0; digit < kDigits; ++digit) ++places[static_cast<std::size_t>(digit)][keys.Digit(value, digit)];
  for (Places& of : places) {
    std::size_t begin = 0;
    for (std::size_t& place : of) begin += std::exchange(place, begin);
  }
  return places;
}

void sortEqualKeys(std::span<double> values, const Keys& keys) {
  for (std::size_t begin = 0, end = 0; begin < values.size(); begin = end) {
    const std::uint64_t key = keys.LeadingBits(values[begin]);
    end = begin + 1;
    while (end < values.size() && keys.LeadingBits(values[end]) == key) ++end;
    if (end - begin > 1) std::sort(&values[begin], &values[begin] + (end - begin));
  }
}

// Sorts `values`, which may lie in `scratch`, into `sorted`.
void radixSort(std::span<const double> values, double* scratch, std::span<double> sorted) {
  const Keys keys(values);
  auto places = placesOf(values, keys);
  const double* from = values.data();
  double* const targets[kDigits] = {sorted.data(), scratch, sorted.data()};
  for (std::size_t digit = 0; digit < kDigits; ++digit) {
    double* const to = targets[digit];
    for (std::size_t i = 0; i < values.size(); ++i)
      to[places[digit][keys.Digit(from[i], static_cast<int>(digit))]++] = from[i];
    from = to;
  }
  sortEqualKeys(sorted, keys);
}

void copyExceedances(std::span<const double> entries, double threshold, double* to) {
  for (const double entry : entries)
    if (!(entry < threshold)) *to++ = entry;
}

}  // namespace

std::unique_ptr<double[]> ascendingExceedances(std::span<const double> entries, double threshold, std::size_t count) {
  std::unique_ptr<double[]> sorted(new double[count]);
  if (count < kWorthwhile) {
    copyExceedances(entries, threshold, sorted.get());
    std::sort(sorted.get(), sorted.get() + count);
    return sorted;
  }
  const std::unique_ptr<double[]> scratch(new double[count]);
  const bool all = count == entries.size();
  if (!all) copyExceedances(entries, threshold, scratch.get());
  radixSort(all ? entries : std::span<const double>(scratch.get(), count), scratch.get(), {sorted.get(), count});
  return sorted;
}

}  // namespace qav
