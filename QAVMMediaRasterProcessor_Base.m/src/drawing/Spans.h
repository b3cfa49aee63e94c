#pragma once

#include "drawing/Canvas.h"
#include "kernels/Fill.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qav {

struct Interval {
  std::int64_t first = 0;
  std::int64_t last = 0;
  bool empty() const { return first == last; }
};

/// Clamps the ends of an interval to 0..size - 1 and orders them. An interval before 0 is empty, and so is one whose
/// ends meet: callers rely on spans of one pixel not being drawn.
inline Interval clampedInterval(std::int64_t a, std::int64_t b, std::int64_t size) {
  if (a < 0 && b < 0) return {};
  a = std::clamp<std::int64_t>(a, 0, size - 1);
  b = std::clamp<std::int64_t>(b, 0, size - 1);
  return {std::min(a, b), std::max(a, b)};
}

/// Draws the spans of a shape in one colour.
class SpanPainter {
 public:
  SpanPainter(const Canvas& canvas, std::uint32_t colour)
      : canvas_(canvas), colour_(colour), fill_(kernels::fillKernels().fillSpan) {}

  /// Columns x1 to x2 of row y in either order, clamped to the canvas, unless one column remains.
  void operator()(std::int64_t y, std::int64_t x1, std::int64_t x2) const {
    if (y < 0 || y >= canvas_.height) return;
    const Interval columns = clampedInterval(x1, x2, canvas_.width);
    if (columns.empty()) return;
    fill_(canvas_.at(columns.first, y), static_cast<std::size_t>(columns.last - columns.first + 1), colour_);
  }

 private:
  Canvas canvas_;
  std::uint32_t colour_;
  decltype(kernels::FillKernels::fillSpan) fill_;
};

}  // namespace qav
