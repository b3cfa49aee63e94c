#pragma once

#include <cstddef>
#include <limits>
#include <span>

namespace qav {

/// The differences that are not below a threshold.
struct Exceedances {
  std::size_t count = 0;
  double sum = 0.0;
  double least = std::numeric_limits<double>::infinity();
  double most = 0.0;
};

/// What hangs on the order of values: the middle one, or the mean of the two middle ones (0 for none), and the square
/// root of the mean squared distance from their mean, summed in ascending order (not-a-number for none).
struct OrderStatistics {
  double median;
  double deviation;
};

/// Of those of `entries` that are not below `threshold`, which `exceedances` describes; entries are 0 or more.
OrderStatistics orderStatistics(std::span<const double> entries, double threshold, const Exceedances& exceedances,
                                double mean);

}  // namespace qav
