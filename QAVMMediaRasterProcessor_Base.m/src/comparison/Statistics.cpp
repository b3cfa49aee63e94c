#include "comparison/Statistics.h"

#include <cmath>

namespace qav {

double percentageOf(std::size_t count, std::size_t all) {
  return count == 0 ? 0.0 : static_cast<double>(count) * 100.0 / static_cast<double>(all);
}

double deviationFrom(double mean, std::span<const double> values) {
  double sum = 0.0;
  for (const double value : values) sum += (value - mean) * (value - mean);
  return std::pow(sum / static_cast<double>(values.size()), 0.5);
}

double markOutliers(std::span<double> entries, double mean, double deviation, int sigmas) {
  const double reach = deviation * sigmas;
  double largest = 0.0;
  for (double& entry : entries) {
    if (std::fabs(entry - mean) > reach)
      entry = kOutlier;
    else if (entry > largest)
      largest = entry;
  }
  return largest;
}

}  // namespace qav
