#pragma once

#include <cstddef>
#include <span>

namespace qav {

/// The entry of a pixel that was rejected as an outlier.
inline constexpr double kOutlier = 1000.0;

/// count * 100 / all; 0 for no count.
double percentageOf(std::size_t count, std::size_t all);
/// Square root of the mean squared distance of `values` from `mean`, summed in order; not-a-number for no values.
double deviationFrom(double mean, std::span<const double> values);
/// Marks the entries further than `sigmas` deviations from the mean and returns the largest other one, or 0.
double markOutliers(std::span<double> entries, double mean, double deviation, int sigmas);

}  // namespace qav
