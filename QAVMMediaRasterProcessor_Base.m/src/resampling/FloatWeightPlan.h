#pragma once

#include <QAVMMWeightsTable.h>

#include "kernels/FloatResampling.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qav {

/// Runs of weights made ready for the float kernels. Refers to the entries' weights.
struct FloatWeightPlan {
  explicit FloatWeightPlan(std::span<const QAVMMContribution> entries);

  /// Finds the run that saves most, for the kernel of rows. It stays empty when none saves anything.
  void addRun();

  std::vector<kernels::FloatTaps> taps;
  kernels::FloatRun run;

 private:
  std::int32_t endOfLone(std::size_t middle, std::int32_t from, std::int32_t behind) const;

  std::vector<double> weightsOfRun_;
  std::vector<kernels::FloatTurn> turns_;
};

}  // namespace qav
