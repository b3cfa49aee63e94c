#pragma once

#include <QAVMMWeightsTable.h>

#include "kernels/ByteResampling.h"

#include <cstdint>
#include <span>
#include <vector>

namespace qav {

/// Runs of weights made ready for the byte kernels: for each position the fastest sum that gives the defined bits.
///
/// Refers to the entries' weights.
struct ByteWeightPlan {
  /// Fours: positions are for the kernel of rows, which takes them four at a time.
  enum class Order { Fours, Singles };

  ByteWeightPlan(std::span<const QAVMMContribution> entries, Order order, int digitBits);

  std::vector<kernels::ByteTaps>
      taps;  ///< of as many positions as there are entries; Fours: the last repeated up to a whole four
  kernels::ByteWeights weights;
  kernels::ByteRun run;  ///< of Fours

 private:
  std::vector<std::int32_t> digits_;
  std::vector<std::int32_t> digitsOfRun_;
};

}  // namespace qav
