#include "drawing/Spans.h"

#include "drawing/Canvas.h"
#include "kernels/Fill.h"

#include <algorithm>

namespace qav {
namespace {

struct Interval {
  std::int64_t first = 0;
  std::int64_t last = 0;
  bool empty() const { return first == last; }
};

// Clamps the ends of an interval to 0..size - 1 and orders them. An interval before 0 is empty, and so is one whose
// ends meet: callers rely on spans of one pixel not being drawn.
Interval clamped(std::int64_t a, std::int64_t b, std::int64_t size) {
  if (a < 0 && b < 0) return {};
  a = std::clamp<std::int64_t>(a, 0, size - 1);
  b = std::clamp<std::int64_t>(b, 0, size - 1);
  return {std::min(a, b), std::max(a, b)};
}

}  // namespace

void drawSpan(const Canvas& canvas, std::int64_t y, std::int64_t x1, std::int64_t x2, std::uint32_t colour) {
  if (y < 0 || y >= canvas.height) return;
  const Interval columns = clamped(x1, x2, canvas.width);
  if (columns.empty()) return;
  kernels::fillKernels().fillSpan(canvas.at(columns.first, y),
                                  static_cast<std::size_t>(columns.last - columns.first + 1), colour);
}

void fillRectangle(const Canvas& canvas, std::int64_t y1, std::int64_t y2, std::int64_t x1, std::int64_t x2,
                   std::uint32_t colour) {
  if (canvas.height < 1) return;
  const Interval rows = clamped(y1, y2, canvas.height);
  if (rows.empty()) return;
  for (std::int64_t y = rows.first; y <= rows.last; ++y) drawSpan(canvas, y, x1, x2, colour);
}

}  // namespace qav
