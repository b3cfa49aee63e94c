#include <QAVPixelImageComparator.h>

#include "comparison/ColourDifferences.h"
#include "comparison/Comparable.h"
#include "comparison/Statistics.h"

#include <algorithm>
#include <vector>

namespace {

struct Exceedances {
  std::vector<double> values;
  double sum = 0.0;
};

// Keeps the differences that reach the threshold and makes the others 0.
Exceedances takeExceedances(std::span<double> differences, double threshold) {
  Exceedances taken;
  taken.values.reserve(differences.size());
  for (double& difference : differences) {
    if (difference < threshold) {
      difference = 0.0;
    } else {
      taken.values.push_back(difference);
      taken.sum += difference;
    }
  }
  return taken;
}

}  // namespace

int QAVPixelImageComparator::ImageLabCompare(QAVPixelImage* first, QAVPixelImage* second, QAVUnicodeString,
                                             double threshold, int sigmas, double& mean, int& count, double& percentage,
                                             double& deviation, double& maximum, double& median, double*& differences) {
  if (!qav::haveComparableShape(first, second)) return 0;
  const unsigned char *const a = first->GetPixelsToRead(), *const b = second->GetPixelsToRead();
  const int stride = first->GetBytesPerPixel();
  if (!a || !b || stride < 3) return 0;

  const std::size_t pixels = qav::extentOf(*first).pixels();
  std::unique_ptr<double[]> entries(new double[pixels]);
  const std::span<double> all(entries.get(), pixels);
  qav::colourDifferences(a, b, pixels, static_cast<std::size_t>(stride), entries.get());

  Exceedances exceedances = takeExceedances(all, threshold);
  std::vector<double>& values = exceedances.values;
  count = static_cast<int>(values.size());
  percentage = qav::percentageOf(values.size(), pixels);
  mean = values.empty() ? 0.0 : exceedances.sum / static_cast<double>(values.size());
  std::sort(values.begin(), values.end());
  median = qav::medianOf(values);
  deviation = qav::deviationFrom(mean, values);
  maximum = values.empty() ? 0.0 : values.back();
  if (sigmas != 0) maximum = qav::markOutliers(all, mean, deviation, sigmas);
  differences = entries.release();
  return 1;
}
