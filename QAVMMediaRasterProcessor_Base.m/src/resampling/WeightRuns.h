#pragma once

#include <QAVMMGenericFilter.h>
#include <QAVMMWeightsTable.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace qav {

/// What all runs of weights of one resampling share.
class Sampling {
 public:
  Sampling(QAVMMGenericFilter* kernel, int dstSize, int srcSize);

  /// Capacity of a run, limited to what an int holds.
  int windowSize() const;
  /// Throws std::bad_array_new_length where that is not a size.
  void checkWindow() const;
  /// Where the run of an output sample begins and ends.
  void place(QAVMMContribution& entry, int index) const;
  /// For a placed run with room for its weights: the kernel's arguments in their place. They are to be replaced by
  /// the kernel's values before `finish`.
  void writeArguments(QAVMMContribution& entry, int index) const;
  /// Turns a run of the kernel's values into weights.
  void finish(QAVMMContribution& entry) const;
  void replaceByValues(double* arguments, std::size_t count) const;

 private:
  double centre(int index) const { return index / scale_ + (0.5 / scale_ - 0.5); }

  QAVMMGenericFilter* filter_;
  double support_;
  double scale_;
  double stretch_ = 1.0;
  std::int64_t sourceSize_;
  std::int64_t window_;
};

inline std::size_t lengthOf(const QAVMMContribution& entry) {
  return entry.left <= entry.right ? static_cast<std::size_t>(std::int64_t{entry.right} - entry.left + 1) : 0;
}

/// The entries of a QAVMMWeightsTable, with all weights in one piece of memory.
struct WeightRuns {
  WeightRuns(QAVMMGenericFilter* filter, int dstSize, int srcSize);

  std::vector<QAVMMContribution> entries;

 private:
  std::unique_ptr<double[]> weights_;
};

}  // namespace qav
