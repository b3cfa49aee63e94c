#pragma once

#include "kernels/RowFilter.h"

namespace qav::kernels {

/// Order statistics of the nine bytes of a neighbourhood.
struct RankKernels {
  RowFilter minimum;
  RowFilter median;
  RowFilter maximum;
};

const RankKernels& rankKernels() noexcept;

}  // namespace qav::kernels
