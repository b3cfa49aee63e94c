#pragma once

#include <QAVExport.h>
#include <QAVMMGenericFilter.h>

/// The source samples that contribute to one output sample.
struct QAVMMContribution {
  double* weights;  ///< weights[k] belongs to source sample left + k; windowSize elements, unset behind right - left
  int left;         ///< first contributing sample
  int right;        ///< last contributing sample, inclusive; below `left` when none contributes
};

/// Weights of a one-dimensional resampling from `srcSize` to `dstSize` samples, for every output sample.
///
/// Pixel centres lie at integer + 0.5 in both grids. When shrinking, the kernel is stretched by srcSize / dstSize.
/// Runs are cut at the ends of the source, and weights whose sum is positive are divided by it (when it is not
/// exactly 1), so borders do not darken. After a division trailing zero weights are dropped, down to one weight;
/// otherwise, and at the front, zeros stay. Weights that sum to zero or less stay as the kernel gave them.
///
/// All arithmetic is in double, the kernel is evaluated once for each weight, from left to right, in order of the
/// output samples. The table keeps nothing of the filter.
class QAV_EXPORT QAVMMWeightsTable {
 public:
  /// A null filter has support 0 and gives weights of 0. Sizes may be 0 or negative: an output size below 1 gives an
  /// empty table. A support whose window is negative or does not fit an int throws std::bad_array_new_length, unless
  /// the table is empty.
  QAVMMWeightsTable(QAVMMGenericFilter* filter, int dstSize, int srcSize);
  ~QAVMMWeightsTable();
  QAVMMWeightsTable(const QAVMMWeightsTable&) = delete;
  QAVMMWeightsTable& operator=(const QAVMMWeightsTable&) = delete;

  QAVMMContribution* contributions = nullptr;  ///< `count` entries; null when count is 0 or less
  int windowSize = 0;  ///< capacity of each entry: 2 * ceil(support of the stretched kernel) + 1
  int count = 0;       ///< the output size

 private:
  QAVMMWeightsTable() noexcept = default;
};
