#include "resampling/WeightRuns.h"

#include "formats/Saturate.h"
#include "resampling/KernelValues.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace qav {
namespace {

int intClamped(std::int64_t v) {
  return static_cast<int>(
      std::clamp<std::int64_t>(v, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// As std::floor and std::ceil, which are calls for the smallest instruction set.
int floorClamped(double v) {
  const int whole = intFrom(v);
  return whole > v ? intClamped(std::int64_t{whole} - 1) : whole;
}

int ceilClamped(double v) {
  const int whole = intFrom(v);
  return whole < v ? intClamped(std::int64_t{whole} + 1) : whole;
}

void normalise(QAVMMContribution& entry, double total) {
  for (int j = entry.left; j <= entry.right; ++j) entry.weights[j - entry.left] /= total;
  while (entry.right > entry.left && entry.weights[entry.right - entry.left] == 0.0) --entry.right;
}

}  // namespace

Sampling::Sampling(QAVMMGenericFilter* kernel, int dstSize, int srcSize)
    : filter_(kernel),
      support_(kernel ? kernel->support : 0.0),
      scale_(static_cast<double>(dstSize) / static_cast<double>(srcSize)),
      sourceSize_(srcSize) {
  if (scale_ < 1.0) {
    support_ = support_ / scale_;
    stretch_ = scale_;
  }
  window_ = 2 * std::int64_t{intFrom(std::ceil(support_))} + 1;
}

int Sampling::windowSize() const { return intClamped(window_); }

void Sampling::checkWindow() const {
  if (window_ < 0 || window_ != windowSize()) throw std::bad_array_new_length();
}

void Sampling::place(QAVMMContribution& entry, int index) const {
  const double at = centre(index);
  std::int64_t left = std::max(0, floorClamped(at - support_));
  std::int64_t right = std::min<std::int64_t>(ceilClamped(at + support_), sourceSize_ - 1);
  // A window that straddles integers on both sides has one tap more than there is room for.
  if (right - left >= window_) {
    if (sourceSize_ > left)
      ++left;
    else
      --right;
  }
  entry.left = intClamped(left);
  entry.right = intClamped(right);
}

void Sampling::writeArguments(QAVMMContribution& entry, int index) const {
  const double at = centre(index);
  for (int j = entry.left; j <= entry.right; ++j) entry.weights[j - entry.left] = stretch_ * (at - j);
}

void Sampling::finish(QAVMMContribution& entry) const {
  double total = 0.0;
  for (int j = entry.left; j <= entry.right; ++j) total += entry.weights[j - entry.left] *= stretch_;
  if (total > 0.0 && total != 1.0) normalise(entry, total);
}

void Sampling::replaceByValues(double* arguments, std::size_t count) const {
  if (filter_)
    kernelValues(*filter_, arguments, count);
  else
    std::fill_n(arguments, count, 0.0);
}

WeightRuns::WeightRuns(QAVMMGenericFilter* filter, int dstSize, int srcSize) {
  if (dstSize <= 0) return;
  const Sampling sampling(filter, dstSize, srcSize);
  sampling.checkWindow();
  entries.resize(static_cast<std::size_t>(dstSize));
  std::size_t total = 0;
  int index = 0;
  for (QAVMMContribution& entry : entries) {
    sampling.place(entry, index++);
    total += lengthOf(entry);
  }
  weights_.reset(new double[total]);
  double* next = weights_.get();
  index = 0;
  for (QAVMMContribution& entry : entries) {
    entry.weights = next;
    next += lengthOf(entry);
    sampling.writeArguments(entry, index++);
  }
  sampling.replaceByValues(weights_.get(), total);
  for (QAVMMContribution& entry : entries) sampling.finish(entry);
}

}  // namespace qav
