#include "drawing/Lines.h"

#include "drawing/Brushes.h"
#include "drawing/Canvas.h"
#include "kernels/Fill.h"

#include <algorithm>
#include <cstdlib>

namespace qav {
namespace {

// The walk takes `major` steps along the longer axis. After i of them it has taken
// floor((major / 2 + i * minor) / major) steps along the shorter one; with 32-bit ends all of this fits 64 bits
// without a sign.
struct Walk {
  std::uint64_t major = 0;
  std::uint64_t minor = 0;
  bool alongX = true;
  Point sign{1, 1};

  std::uint64_t half() const { return major / 2; }
  // The first i with at least m steps along the shorter axis, for m up to `minor`.
  std::uint64_t firstWith(std::uint64_t m) const { return m == 0 ? 0 : (m * major - half() + minor - 1) / minor; }
};

Walk walkBetween(Point from, Point to) {
  const auto dx = static_cast<std::uint64_t>(std::abs(to.x - from.x));
  const auto dy = static_cast<std::uint64_t>(std::abs(to.y - from.y));
  return {std::max(dx, dy), std::min(dx, dy), dx >= dy, {from.x <= to.x ? 1 : -1, from.y <= to.y ? 1 : -1}};
}

// Numbers from `first` up to, not including, `end`.
struct Range {
  std::uint64_t first = 0;
  std::uint64_t end = 0;
  bool empty() const { return first >= end; }
};

// The steps 0..length after which start + sign * step lies in low..high.
Range stepsInside(std::int64_t start, std::int64_t sign, std::uint64_t length, std::int64_t low, std::int64_t high) {
  const std::int64_t nearest = std::max<std::int64_t>(sign > 0 ? low - start : start - high, 0);
  const std::int64_t farthest = sign > 0 ? high - start : start - low;
  if (farthest < nearest) return {};
  return {static_cast<std::uint64_t>(nearest), std::min(length, static_cast<std::uint64_t>(farthest)) + 1};
}

// The numbers of the walk's points that lie no more than `margin` outside the canvas.
Range visiblePoints(const Canvas& canvas, const Walk& walk, Point from, std::int64_t margin) {
  const Range columns =
      stepsInside(from.x, walk.sign.x, walk.alongX ? walk.major : walk.minor, -margin, canvas.width - 1 + margin);
  const Range rows =
      stepsInside(from.y, walk.sign.y, walk.alongX ? walk.minor : walk.major, -margin, canvas.height - 1 + margin);
  if (columns.empty() || rows.empty()) return {};
  const Range along = walk.alongX ? columns : rows;
  const Range across = walk.alongX ? rows : columns;
  return {std::max(along.first, walk.firstWith(across.first)),
          across.end > walk.minor ? along.end : std::min(along.end, walk.firstWith(across.end))};
}

Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }

// Calls visit(position) for the points of a non-empty range, where a step along the longer axis adds `straight` to the
// position, and one along both `diagonal`.
template <class Position, class Step, class Visit>
void visitPoints(const Walk& walk, Range points, Position position, Step straight, Step diagonal, Visit visit) {
  std::uint64_t error = walk.major == 0 ? 0 : (walk.half() + points.first * walk.minor) % walk.major;
  const std::uint64_t rest = walk.major - walk.minor;
  for (std::uint64_t left = points.end - points.first;;) {
    visit(position);
    if (--left == 0) return;
    const bool both = error >= rest;
    error = both ? error - rest : error + walk.minor;
    position = position + (both ? diagonal : straight);
  }
}

Point straightStep(const Walk& walk) { return walk.alongX ? Point{walk.sign.x, 0} : Point{0, walk.sign.y}; }

Point pointAt(const Walk& walk, Point from, std::uint64_t i) {
  const auto along = static_cast<std::int64_t>(i);
  const auto across = static_cast<std::int64_t>(walk.major == 0 ? 0 : (walk.half() + i * walk.minor) / walk.major);
  return {from.x + walk.sign.x * (walk.alongX ? along : across), from.y + walk.sign.y * (walk.alongX ? across : along)};
}

}  // namespace

void drawLine(const Canvas& canvas, Point from, Point to, std::uint32_t colour) {
  const Walk walk = walkBetween(from, to);
  const Range points = visiblePoints(canvas, walk, from, 0);
  if (points.empty()) return;
  if (walk.minor == 0 && walk.alongX) {
    const Point left = pointAt(walk, from, walk.sign.x > 0 ? points.first : points.end - 1);
    return kernels::fillKernels().fillSpan(canvas.at(left.x, left.y), points.end - points.first, colour);
  }
  const auto bytesOf = [&](Point step) { return static_cast<std::ptrdiff_t>(4 * (step.y * canvas.width + step.x)); };
  const Point first = pointAt(walk, from, points.first);
  visitPoints(walk, points, canvas.at(first.x, first.y), bytesOf(straightStep(walk)), bytesOf(walk.sign),
              [colour](unsigned char* pixel) { std::memcpy(pixel, &colour, 4); });
}

void drawStampedLine(const Canvas& canvas, Point from, Point to, QAVMMIBrush brush, std::uint32_t colour) {
  const std::span<const StampRow> stamp = stampOf(brush);
  if (stamp.empty() || canvas.height < 1) return;
  const Walk walk = walkBetween(from, to);
  const Range points = visiblePoints(canvas, walk, from, kBrushReach);
  if (points.empty()) return;
  const StampPainter paint(canvas, stamp, colour);
  // The points of one row are stamped together.
  Point start = pointAt(walk, from, points.first), end = start;
  visitPoints(walk, points, start, straightStep(walk), walk.sign, [&](Point position) {
    if (position.y != end.y) {
      paint(start.y, std::min(start.x, end.x), std::max(start.x, end.x));
      start = position;
    }
    end = position;
  });
  paint(start.y, std::min(start.x, end.x), std::max(start.x, end.x));
}

}  // namespace qav
