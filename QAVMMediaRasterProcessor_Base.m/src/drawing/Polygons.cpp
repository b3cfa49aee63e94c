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
  std::int32_t first = 0;
  std::int32_t last = 0;
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
  const std::int64_t last = std::max(std::max(a.y, b.y) - 1, first);
  return {startOf(a, b, slope), slope, static_cast<std::int32_t>(first), static_cast<std::int32_t>(last)};
}

bool isVisible(Point a, Point b, const Canvas& canvas) {
  return a.y != b.y && std::max(a.y, b.y) >= 0 && std::min(a.y, b.y) < canvas.height;
}

// Sorts what is nearly sorted, as edges are from row to row, and gives up on the rest in time.
void sortByX(std::span<Edge> edges) {
  std::size_t moves = 16 * edges.size();
  for (std::size_t i = 1; i < edges.size(); ++i) {
    if (edges[i - 1].x <= edges[i].x) continue;
    const Edge edge = edges[i];
    std::size_t place = i;
    for (; place > 0 && edges[place - 1].x > edge.x; --place) edges[place] = edges[place - 1];
    edges[place] = edge;
    if (i - place < moves) {
      moves -= i - place;
      continue;
    }
    return std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.x < b.x; });
  }
}

// Edges before `active` cross the current row, from left to right; those from `next` on are still to come, first rows
// first.
struct EdgeList {
  std::span<Edge> edges;
  std::size_t active = 0;
  std::size_t next = 0;

  std::span<const Edge> advanceTo(std::int64_t row) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < active; ++i) {
      Edge edge = edges[i];
      edge.x += edge.slope;
      if (row <= edge.last) edges[kept++] = edge;
    }
    for (; next < edges.size() && edges[next].first == row; ++next) edges[kept++] = edges[next];
    active = kept;
    sortByX(edges.first(active));
    return edges.first(active);
  }
};

void fillBetween(const Canvas& canvas, std::span<Edge> edges, std::uint32_t colour) {
  std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.first < b.first; });
  const SpanPainter paint(canvas, colour);
  EdgeList list{edges};
  std::int64_t row = edges.empty() ? canvas.height : edges.front().first;
  while (row < canvas.height) {
    const std::span<const Edge> active = list.advanceTo(row);
    for (std::size_t i = 0; i + 1 < active.size(); i += 2) paint(row, intFrom(active[i].x), intFrom(active[i + 1].x));
    ++row;
    if (active.empty()) row = list.next < edges.size() ? edges[list.next].first : canvas.height;
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
  std::size_t used = 0;
  visitEdges(counts, points, [&](Point a, Point b) {
    drawLine(canvas, a, b, colour);
    if (isVisible(a, b, canvas)) edges[used++] = edgeBetween(a, b);
  });
  fillBetween(canvas, {edges.get(), used}, colour);
}

}  // namespace qav
