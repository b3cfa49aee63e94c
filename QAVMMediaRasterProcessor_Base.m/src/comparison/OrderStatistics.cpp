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
// they differ; every part, which lies in the caches, is sorted by two digits of the next 8 each. That leaves hardly
// anything out of order, and to clear and add up more counts for every part would take longer than it saves.
constexpr int kPartBits = 11, kDigitBits = 8;
constexpr std::size_t kParts = std::size_t{1} << kPartBits, kDigitValues = std::size_t{1} << kDigitBits;
constexpr std::size_t kWorthParting = 2000, kWorthDigits = 128;

struct Keys {
  Keys(double least, double most) : least_(std::bit_cast<std::uint64_t>(least)) {
    const auto differing = static_cast<int>(std::bit_width(std::bit_cast<std::uint64_t>(most) - least_));
    shift_ = std::max(0, differing - kPartBits - 2 * kDigitBits);
  }
  std::uint64_t LeadingBits(double value) const { return (std::bit_cast<std::uint64_t>(value) - least_) >> shift_; }
  std::size_t Part(double value) const { return LeadingBits(value) >> (2 * kDigitBits); }
  std::size_t HighDigit(double value) const { return (LeadingBits(value) >> kDigitBits) % kDigitValues; }
  std::size_t LowDigit(double value) const { return LeadingBits(value) % kDigitValues; }

 private:
  std::uint64_t least_;
  int shift_;
};

template <class Counts>
void placesFromCounts(Counts& counts) {
  typename Counts::value_type begin = 0;
  for (auto& count : counts) begin += std::exchange(count, begin);
}

void sortEqualKeys(std::span<double> values, const Keys& keys) {
  for (std::size_t begin = 0, end = 0; begin < values.size(); begin = end) {
    const std::uint64_t key = keys.LeadingBits(values[begin]);
    end = begin + 1;
    while (end < values.size() && keys.LeadingBits(values[end]) == key) ++end;
    if (end - begin > 1) std::sort(&values[begin], &values[begin] + (end - begin));
  }
}

// Sorts the values of one part.
void sortPart(std::span<double> values, double* scratch, const Keys& keys) {
  if (values.size() < kWorthDigits) return std::sort(values.begin(), values.end());
  std::array<std::uint32_t, kDigitValues> low{}, high{};
  for (const double value : values) {
    ++low[keys.LowDigit(value)];
    ++high[keys.HighDigit(value)];
  }
  placesFromCounts(low);
  placesFromCounts(high);
  for (const double value : values) scratch[low[keys.LowDigit(value)]++] = value;
  for (std::size_t i = 0; i < values.size(); ++i) values[high[keys.HighDigit(scratch[i])]++] = scratch[i];
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
  std::array<std::size_t, kParts> places{};
  forEachExceedance(entries, threshold, [&](double value) { ++places[keys.Part(value)]; });
  const std::size_t largest = *std::max_element(places.begin(), places.end());
  placesFromCounts(places);
  forEachExceedance(entries, threshold, [&](double value) { values[places[keys.Part(value)]++] = value; });
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
