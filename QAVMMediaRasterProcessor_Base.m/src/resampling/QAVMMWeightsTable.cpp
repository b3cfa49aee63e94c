#include <QAVMMWeightsTable.h>

#include "formats/Saturate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>

namespace {

// What all entries of a table share.
struct Sampling {
  Sampling(QAVMMGenericFilter* kernel, int dstSize, int srcSize)
      : filter(kernel),
        support(kernel ? kernel->support : 0.0),
        scale(static_cast<double>(dstSize) / static_cast<double>(srcSize)),
        sourceSize(srcSize) {
    if (scale < 1.0) {
      support = support / scale;
      stretch = scale;
    }
  }

  std::int64_t windowSize() const { return 2 * std::int64_t{qav::intFrom(std::ceil(support))} + 1; }

  QAVMMGenericFilter* filter;
  double support;
  double scale;
  double stretch = 1.0;
  std::int64_t sourceSize;
};

int intClamped(std::int64_t v) {
  return static_cast<int>(
      std::clamp<std::int64_t>(v, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

void normalise(QAVMMContribution& entry, double total) {
  for (int j = entry.left; j <= entry.right; ++j) entry.weights[j - entry.left] /= total;
  while (entry.right > entry.left && entry.weights[entry.right - entry.left] == 0.0) --entry.right;
}

void fillEntry(QAVMMContribution& entry, const Sampling& sampling, int index, int windowSize) {
  const double centre = index / sampling.scale + (0.5 / sampling.scale - 0.5);
  std::int64_t left = std::max(0, qav::intFrom(std::floor(centre - sampling.support)));
  std::int64_t right =
      std::min<std::int64_t>(qav::intFrom(std::ceil(centre + sampling.support)), sampling.sourceSize - 1);
  // A window that straddles integers on both sides has one tap more than there is room for.
  if (right - left >= windowSize) {
    if (sampling.sourceSize > left)
      ++left;
    else
      --right;
  }
  entry.left = intClamped(left);
  entry.right = intClamped(right);
  double total = 0.0;
  for (int j = entry.left; j <= entry.right; ++j) {
    const double w =
        sampling.filter ? sampling.filter->Evaluate(sampling.stretch * (centre - j)) * sampling.stretch : 0.0;
    total += w;
    entry.weights[j - entry.left] = w;
  }
  if (total > 0.0 && total != 1.0) normalise(entry, total);
}

}  // namespace

// Delegates, so that the destructor runs when Evaluate throws.
QAVMMWeightsTable::QAVMMWeightsTable(QAVMMGenericFilter* filter, int dstSize, int srcSize) : QAVMMWeightsTable() {
  const Sampling sampling(filter, dstSize, srcSize);
  const std::int64_t window = sampling.windowSize();
  windowSize = intClamped(window);
  count = dstSize;
  if (dstSize <= 0) return;
  contributions = new QAVMMContribution[static_cast<std::size_t>(dstSize)]();
  if (window != windowSize || window < 0) throw std::bad_array_new_length();
  for (int i = 0; i < dstSize; ++i) contributions[i].weights = new double[static_cast<std::size_t>(windowSize)];
  for (int i = 0; i < dstSize; ++i) fillEntry(contributions[i], sampling, i, windowSize);
}

QAVMMWeightsTable::~QAVMMWeightsTable() {
  for (int i = 0; contributions && i < count; ++i) {
    delete[] contributions[i].weights;
    contributions[i].weights = nullptr;
  }
  delete[] contributions;
  contributions = nullptr;
}
