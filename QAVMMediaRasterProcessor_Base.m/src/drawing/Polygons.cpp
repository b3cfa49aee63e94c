#include "drawing/Polygons.h"

#include "drawing/Canvas.h"
#include "drawing/Lines.h"
#include "drawing/Spans.h"
#include "formats/Saturate.h"

#include <algorithm>
#include <cstddef>
#include <memory>

namespace qav {
namespace {

// An edge crosses the rows first..last. Its x is added up row by row: multiplying would round differently.
struct Edge {
  double x = 0;
  double slope = 0;
  std::int64_t first = 0;
  std::int64_t last = 0;
};

template <class Visit>
void visitEdges(std::span<const int> counts, const int* points, Visit visit) {
  for (const int count : counts) {
    const auto vertex = [&](int i) { return Point{points[2 * std::ptrdiff_t{i}], points[2 * std::ptrdiff_t{i} + 1]}; };
    for (int i = 0; i + 1 < count; ++i) visit(vertex(i), vertex(i + 1));
    visit(vertex(count - 1), vertex(0));
    points += 2 * std::ptrdiff_t{count};
  }
}

// Where a sloping edge stands on its first row: at its upper end, one column further right when it runs right and
// downwards, more across than down, in the order of its vertices.
double startOf(Point a, Point b, double slope) {
  const Point upper = a.y < b.y ? a : b;
  const bool shifted = a.x < b.x && slope > 1;
  return static_cast<double>(upper.x) + (shifted ? 1 : 0);
}

// An edge that starts above the image has its first row at 0, with the x of its upper end. The row of the lower end
// belongs to the outline, unless the edge ends on row 0 itself.
Edge edgeBetween(Point a, Point b) {
  const double slope = static_cast<double>(b.x - a.x) / static_cast<double>(b.y - a.y);
  const std::int64_t first = std::max<std::int64_t>(std::min(a.y, b.y), 0);
  return {startOf(a, b, slope), slope, first, std::max(std::max(a.y, b.y) - 1, first)};
}

bool isVisible(Point a, Point b, const Canvas& canvas) {
  return a.y != b.y && std::max(a.y, b.y) >= 0 && std::min(a.y, b.y) < canvas.height;
}

// Edges before `active` cross the current row, in no order; those from `next` on are still to come, first rows first.
struct EdgeList {
  std::span<Edge> edges;
  std::size_t active = 0;
  std::size_t next = 0;

  void advanceTo(std::int64_t row) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < active; ++i) {
      Edge edge = edges[i];
      edge.x += edge.slope;
      if (row <= edge.last) edges[kept++] = edge;
    }
    for (; next < edges.size() && edges[next].first == row; ++next) edges[kept++] = edges[next];
    active = kept;
  }
};

// `crossings` has room for one crossing an edge.
void fillBetween(const Canvas& canvas, std::span<Edge> edges, int* crossings, std::uint32_t colour) {
  std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.first < b.first; });
  EdgeList list{edges};
  std::int64_t row = edges.empty() ? canvas.height : edges.front().first;
  while (row < canvas.height) {
    list.advanceTo(row);
    const std::size_t count = list.active;
    for (std::size_t i = 0; i < count; ++i) crossings[i] = intFrom(edges[i].x);
    std::sort(crossings, crossings + count);
    for (std::size_t i = 0; i + 1 < count; i += 2) drawSpan(canvas, row, crossings[i], crossings[i + 1], colour);
    ++row;
    if (count == 0) row = list.next < edges.size() ? edges[list.next].first : canvas.height;
  }
}

}  // namespace

void drawPolygons(const Canvas& canvas, std::span<const int> counts, const int* points, std::uint32_t colour) {
  std::size_t total = 0;
  for (const int count : counts) {
    if (count < 3) return;
    total += static_cast<std::size_t>(count);
  }
  const std::unique_ptr<Edge[]> edges(new Edge[total]);
  const std::unique_ptr<int[]> crossings(new int[total]);
  std::size_t used = 0;
  visitEdges(counts, points, [&](Point a, Point b) {
    drawLine(canvas, a, b, colour);
    if (isVisible(a, b, canvas)) edges[used++] = edgeBetween(a, b);
  });
  fillBetween(canvas, {edges.get(), used}, crossings.get(), colour);
}

}  // namespace qav
