#include "ResamplingTaps.h"

#include <algorithm>
#include <cmath>

namespace {

double triangle(double x) { return x < 1.0 ? 1.0 - x : 0.0; }

// The family of cubics of Mitchell and Netravali, "Reconstruction Filters in Computer Graphics" (1988).
double cubic(double x, double b, double c) {
  if (x < 1.0) return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + (6 - 2 * b)) / 6;
  if (x < 2.0)
    return ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x + (8 * b + 24 * c)) / 6;
  return 0.0;
}

double kernel(QAVMMIResampleType kind, double distance) {
  if (kind == QAVMMIResampleTriangle) return triangle(distance);
  return kind == QAVMMIResampleCatmullRom ? cubic(distance, 0.0, 0.5) : cubic(distance, 1.0 / 3, 1.0 / 3);
}

ResamplingTaps nearestTaps(int from, int to) {
  ResamplingTaps taps{{}, {1.0}};
  taps.positions.reserve(static_cast<std::size_t>(to));
  for (long long i = 0; i < to; ++i)
    taps.positions.push_back({static_cast<int>((2 * i + 1) * from / (2LL * to)), 1, 0});
  return taps;
}

void normalise(double* weights, int count) {
  double sum = 0.0;
  for (int i = 0; i < count; ++i) sum += weights[i];
  for (int i = 0; i < count; ++i) weights[i] /= sum;
}

}  // namespace

ResamplingTaps makeResamplingTaps(QAVMMIResampleType kind, int from, int to) {
  if (kind == QAVMMIResampleNearest) return nearestTaps(from, to);
  ResamplingTaps taps;
  taps.positions.reserve(static_cast<std::size_t>(to));
  const double step = static_cast<double>(from) / to;
  const double stretch = std::max(1.0, step);
  const double support = (kind == QAVMMIResampleTriangle ? 1.0 : 2.0) * stretch;
  for (int i = 0; i < to; ++i) {
    const double centre = (i + 0.5) * step - 0.5;
    const auto low = static_cast<long long>(std::ceil(centre - support));
    const auto high = static_cast<long long>(std::floor(centre + support));
    const int first = static_cast<int>(std::clamp(low, 0LL, from - 1LL));
    const int last = static_cast<int>(std::clamp(high, 0LL, from - 1LL));
    const ResamplingTaps::Position position{first, last - first + 1, taps.weights.size()};
    taps.weights.resize(position.weights + static_cast<std::size_t>(position.count));
    double* weights = taps.weights.data() + position.weights;
    for (long long j = low; j <= high; ++j)
      weights[std::clamp(j, 0LL, from - 1LL) - first] +=
          kernel(kind, std::fabs(static_cast<double>(j) - centre) / stretch);
    normalise(weights, position.count);
    taps.positions.push_back(position);
  }
  return taps;
}
