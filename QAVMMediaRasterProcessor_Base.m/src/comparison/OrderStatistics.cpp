#include "comparison/OrderStatistics.h"

#include <LargePages.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>

namespace qav {
namespace {

// Doubles of 0 or more are in the order of their bit patterns. Values are parted by the leading 11 of the bits in which
// they differ; every part, which lies in the caches, is sorted by the next 22. That leaves hardly anything out of
// order.
constexpr int kDigitBits = 11, kDigits = 3;
constexpr std::size_t kDigitValues = std::size_t{1} << kDigitBits;
constexpr std::size_t kWorthParting = 2000, kWorthDigits = 128;

struct Keys {
  Keys(double least, double most) : least_(std::bit_cast<std::uint64_t>(least)) {
    const auto differing = static_cast<int>(std::bit_width(std::bit_cast<std::uint64_t>(most) - least_));
    shift_ = std::max(0, differing - kDigits * kDigitBits);
  }
  std::uint64_t LeadingBits(double value) const { return (std::bit_cast<std::uint64_t>(value) - least_) >> shift_; }
  std::size_t Digit(double value, int digit) const {
    return (LeadingBits(value) >> (digit * kDigitBits)) % kDigitValues;
  }

 private:
  std::uint64_t least_;
  int shift_;
};

template <class Place>
void placesFromCounts(std::array<Place, kDigitValues>& counts) {
  Place begin = 0;
  for (Place& count : counts) begin += std::exchange(count, begin);
}

void sortEqualKeys(std::span<double> values, const Keys& keys) {
  for (std::size_t begin = 0, end = 0; begin < values.size(); begin = end) {
    const std::uint64_t key = keys.LeadingBits(values[begin]);
    end = begin + 1;
    while (end < values.size() && keys.LeadingBits(values[end]) == key) ++end;
    if (end - begin > 1) std::sort(&values[begin], &values[begin] + (end - begin));
  }
}

// Sorts values that have the highest digit in common.
void sortPart(std::span<double> values, double* scratch, const Keys& keys) {
  if (values.size() < kWorthDigits) return std::sort(values.begin(), values.end());
  std::array<std::uint32_t, kDigitValues> low{}, middle{};
  for (const double value : values) {
    ++low[keys.Digit(value, 0)];
    ++middle[keys.Digit(value, 1)];
  }
  placesFromCounts(low);
  placesFromCounts(middle);
  for (const double value : values) scratch[low[keys.Digit(value, 0)]++] = value;
  for (std::size_t i = 0; i < values.size(); ++i) values[middle[keys.Digit(scratch[i], 1)]++] = scratch[i];
  sortEqualKeys(values, keys);
}

/// Takes values in ascending order.
class Summary {
 public:
  Summary(std::size_t count, double mean) : count_(count), mean_(mean) {}

  void Add(std::span<const double> values) {
    double squares = squares_;
    for (const double value : values) squares += (value - mean_) * (value - mean_);
    squares_ = squares;
    Take(values, (count_ - 1) / 2, lower_);
    Take(values, count_ / 2, upper_);
    added_ += values.size();
  }
  OrderStatistics Result() const {
    const double median = count_ % 2 ? upper_ : (lower_ + upper_) / 2.0;
    return {median, std::pow(squares_ / static_cast<double>(count_), 0.5)};
  }

 private:
  void Take(std::span<const double> values, std::size_t number, double& to) const {
    if (number >= added_ && number - added_ < values.size()) to = values[number - added_];
  }

  std::size_t count_, added_ = 0;
  double mean_, squares_ = 0.0, lower_ = 0.0, upper_ = 0.0;
};

template <class Take>
void forEachExceedance(std::span<const double> entries, double threshold, Take take) {
  for (const double entry : entries)
    if (!(entry < threshold)) take(entry);
}

}  // namespace

OrderStatistics orderStatistics(std::span<const double> entries, double threshold, const Exceedances& exceedances,
                                double mean) {
  const std::size_t count = exceedances.count;
  Summary summary(count, mean);
  if (count == 0) return summary.Result();
  const auto values = std::make_unique_for_overwrite<double[]>(count);
  if (count < kWorthParting) {
    double* end = values.get();
    forEachExceedance(entries, threshold, [&](double value) { *end++ = value; });
    std::sort(values.get(), end);
    summary.Add({values.get(), count});
    return summary.Result();
  }
  adviseLargePages(values.get(), count * sizeof(double));
  const Keys keys(exceedances.least, exceedances.most);
  std::array<std::size_t, kDigitValues> places{};
  forEachExceedance(entries, threshold, [&](double value) { ++places[keys.Digit(value, kDigits - 1)]; });
  const std::size_t largest = *std::max_element(places.begin(), places.end());
  placesFromCounts(places);
  forEachExceedance(entries, threshold,
                    [&](double value) { values[places[keys.Digit(value, kDigits - 1)]++] = value; });
  const auto scratch = std::make_unique_for_overwrite<double[]>(largest);
  std::size_t begin = 0;
  for (const std::size_t end : places) {
    const std::span<double> part(&values[begin], end - begin);
    sortPart(part, scratch.get(), keys);
    summary.Add(part);
    begin = end;
  }
  return summary.Result();
}

}  // namespace qav
