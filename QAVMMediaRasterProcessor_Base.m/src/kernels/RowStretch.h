#pragma once

#include <cstddef>

namespace qav::kernels {

/// Consecutive results of a pass over rows, and the part of the source that they look at. Kernels that bring source
/// samples into another form before they sum them do so for one stretch at a time, so that it stays in the cache.
struct RowStretch {
  std::size_t first;  ///< results first to end - 1
  std::size_t end;
  std::size_t source;  ///< where their part of the source begins
  std::size_t length;  ///< 0 when they look at nothing
};

/// How a kernel takes its stretches.
struct RowStretchShape {
  std::size_t step;     ///< results taken at once: a stretch is a multiple of as many, unless it is the last
  std::size_t unit;     ///< the source is taken in units of as many pixels
  std::size_t span;     ///< units that a stretch may be long, unless `step` results need more
  std::size_t scratch;  ///< scratch memory for each unit
};

}  // namespace qav::kernels
