#include <QAVPixelImageComparator.h>

#include "comparison/ColourDifferences.h"
#include "comparison/Comparable.h"
#include "comparison/OrderStatistics.h"
#include "comparison/Statistics.h"

#include <LargePages.h>

#include <algorithm>

namespace {

using qav::Exceedances;

// Makes the differences below the threshold 0 and takes the others.
void takeExceedances(std::span<double> differences, double threshold, Exceedances& exceedances) {
  Exceedances taken = exceedances;
  for (double& difference : differences) {
    const bool below = difference < threshold;
    taken.count += !below;
    taken.least = below ? taken.least : std::min(taken.least, difference);
    // Adding 0 changes nothing, as no sum of differences is -0.
    difference = below ? 0.0 : difference;
    taken.sum += difference;
    taken.most = std::max(taken.most, difference);
  }
  exceedances = taken;
}

// Strip by strip, so that what was just written is still in the first-level cache.
Exceedances measure(const unsigned char* first, const unsigned char* second, std::size_t stride, double threshold,
                    std::span<double> differences) {
  constexpr std::size_t kStrip = 2048;
  Exceedances exceedances;
  for (std::size_t from = 0; from < differences.size(); from += kStrip) {
    const auto strip = differences.subspan(from, std::min(kStrip, differences.size() - from));
    qav::colourDifferences(first + from * stride, second + from * stride, strip.size(), stride, strip.data());
    takeExceedances(strip, threshold, exceedances);
  }
  return exceedances;
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
  adviseLargePages(entries.get(), pixels * sizeof(double));
  const std::span<double> all(entries.get(), pixels);
  const Exceedances exceedances = measure(a, b, static_cast<std::size_t>(stride), threshold, all);

  count = static_cast<int>(exceedances.count);
  percentage = qav::percentageOf(exceedances.count, pixels);
  mean = exceedances.count == 0 ? 0.0 : exceedances.sum / static_cast<double>(exceedances.count);
  const qav::OrderStatistics order = qav::orderStatistics(all, threshold, exceedances, mean);
  median = order.median;
  deviation = order.deviation;
  maximum = exceedances.most;
  if (sigmas != 0) maximum = qav::markOutliers(all, mean, deviation, sigmas);
  differences = entries.release();
  return 1;
}
