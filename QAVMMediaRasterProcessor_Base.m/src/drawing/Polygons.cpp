#include "drawing/Polygons.h"

#include "drawing/Canvas.h"
#include "drawing/Lines.h"
#include "drawing/Spans.h"
#include "formats/Saturate.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <utility>

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

// Edges before `active` cross the current row, from left to right; those from `next` on are still to come, first rows
// first.
class EdgeList {
 public:
  explicit EdgeList(std::span<Edge> edges) : edges_(edges) {
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.first < b.first; });
  }

  std::span<const Edge> advanceTo(std::int64_t row) {
    if (!step(row) || (next_ < edges_.size() && edges_[next_].first == row)) rebuild(row);
    return edges_.first(active_);
  }

  /// The first row from `row` on that an edge may cross, given the edges of the row before; `end` if there is none.
  std::int64_t nextRow(std::int64_t row, std::int64_t end) const {
    if (active_ > 0) return row;
    return next_ < edges_.size() ? edges_[next_].first : end;
  }

 private:
  // Takes the active edges to the next row. True when each still crosses it and they are in order.
  bool step(std::int64_t row) {
    bool settled = true;
    double previous = -std::numeric_limits<double>::infinity();
    for (Edge& edge : edges_.first(active_)) {
      edge.x += edge.slope;
      settled = settled & (row <= edge.last) & (previous <= edge.x);
      previous = edge.x;
    }
    return settled;
  }

  void rebuild(std::int64_t row) {
    moves_ = 16 * edges_.size();
    const std::size_t old = std::exchange(active_, 0);
    for (std::size_t i = 0; i < old; ++i)
      if (row <= edges_[i].last) insert(Edge(edges_[i]));
    for (; next_ < edges_.size() && edges_[next_].first == row; ++next_) insert(Edge(edges_[next_]));
    const std::span<Edge> active = edges_.first(active_);
    if (moves_ == 0) std::sort(active.begin(), active.end(), [](const Edge& a, const Edge& b) { return a.x < b.x; });
  }

  // Edges hardly change places from row to row. Where they do, sorting them all at once is left for the end.
  void insert(const Edge& edge) {
    std::size_t place = active_++;
    for (; moves_ > 0 && place > 0 && edges_[place - 1].x > edge.x; --place, --moves_)
      edges_[place] = edges_[place - 1];
    edges_[place] = edge;
  }

  std::span<Edge> edges_;
  std::size_t active_ = 0;
  std::size_t next_ = 0;
  std::size_t moves_ = 0;
};

void fillBetween(const Canvas& canvas, std::span<Edge> edges, std::uint32_t colour) {
  const SpanPainter paint(canvas, colour);
  EdgeList list(edges);
  for (std::int64_t row = list.nextRow(0, canvas.height); row < canvas.height;
       row = list.nextRow(row + 1, canvas.height)) {
    const std::span<const Edge> active = list.advanceTo(row);
    for (std::size_t i = 0; i + 1 < active.size(); i += 2) paint(row, intFrom(active[i].x), intFrom(active[i + 1].x));
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
