#pragma once

#include <QAVMMWeightsTable.h>

#include "kernels/ByteResampling.h"

#include <cstdint>
#include <vector>

namespace qav {

/// A weights table made ready for the byte kernels: for each position the fastest sum that gives the defined bits.
///
/// Refers to the table's weights.
struct ByteWeightPlan {
  /// Fours: positions are for the kernel of rows, which takes them four at a time.
  enum class Order { Fours, Singles };

  ByteWeightPlan(const QAVMMWeightsTable& table, Order order, int largestDigit);

  std::vector<kernels::ByteTaps> taps;
  kernels::ByteWeights weights;

 private:
  std::vector<std::int32_t> digits_;
};

}  // namespace qav
