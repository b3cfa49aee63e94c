#pragma once

#include "kernels/RowStretch.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

namespace qav {

/// The units of source pixels that some positions look at.
template <class Taps>
kernels::RowStretch unitsOf(std::span<const Taps> taps, std::size_t first, std::size_t end, std::size_t unit) {
  std::size_t begin = 0, behind = 0;
  for (const Taps& position : taps.subspan(first, end - first)) {
    if (position.count == 0) continue;
    const auto left = static_cast<std::size_t>(position.left), count = static_cast<std::size_t>(position.count);
    begin = behind == 0 ? left : std::min(begin, left);
    behind = std::max(behind, left + count);
  }
  const std::size_t unitsBefore = begin / unit;
  return {first, end, unitsBefore, (behind + unit - 1) / unit - unitsBefore};
}

/// Divides positions first to end - 1 into stretches, each as long as the shape allows, and adds them to the list.
template <class Taps>
void addStretches(std::span<const Taps> taps, std::size_t first, std::size_t end, const kernels::RowStretchShape& shape,
                  std::vector<kernels::RowStretch>& stretches) {
  const std::size_t before = stretches.size();
  for (std::size_t x = first; x < end; x += shape.step) {
    const auto next = unitsOf(taps, x, std::min(end, x + shape.step), shape.unit);
    if (stretches.size() > before) {
      kernels::RowStretch& last = stretches.back();
      const std::size_t length = std::max(last.length, next.source + next.length - last.source);
      if (last.length > 0 && next.length > 0 && next.source >= last.source && length <= shape.span) {
        last.end = next.end;
        last.length = length;
        continue;
      }
    }
    stretches.push_back(next);
  }
}

/// Scratch memory for any of the stretches.
inline std::size_t scratchFor(const std::vector<kernels::RowStretch>& stretches,
                              const kernels::RowStretchShape& shape) {
  std::size_t longest = 0;
  for (const kernels::RowStretch& stretch : stretches) longest = std::max(longest, stretch.length);
  return longest * shape.scratch;
}

}  // namespace qav
