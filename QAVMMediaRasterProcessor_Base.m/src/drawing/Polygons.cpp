#include "drawing/Polygons.h"

#include "drawing/Canvas.h"
#include "drawing/Lines.h"
#include "kernels/Fill.h"

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
  /// `places` has room for two numbers for each of the padded edges.
  EdgeList(std::span<Edge> edges, double* places) : edges_(edges), places_(places) {
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.first < b.first; });
  }

  /// Fills all rows of the canvas.
  void fill(const Canvas& canvas, std::uint32_t colour) {
    const auto fillBetween = kernels::fillKernels().fillBetween;
    for (std::int64_t row = 0; (row = enter(row, canvas.height)) < canvas.height;) {
      const Places places = collectPlaces();
      const std::int64_t end = std::min(canvas.height, endOfActive());
      const std::size_t filled =
          fillBetween(canvas.at(0, row), static_cast<std::int32_t>(canvas.width), static_cast<std::size_t>(end - row),
                      places.x, places.slope, active_, colour);
      for (std::size_t i = 0; i < active_; ++i) edges_[i].x = places.x[i];
      row += static_cast<std::int64_t>(filled);
    }
  }

 private:
  struct Places {
    double* x;
    double* slope;
  };

  // Drops the edges that end before the row, takes those that begin on it and puts all in order. With no edge left the
  // row is the next one that has any, or `end`.
  std::int64_t enter(std::int64_t row, std::int64_t end) {
    moves_ = 16 * edges_.size();
    const std::size_t old = std::exchange(active_, 0);
    for (std::size_t i = 0; i < old; ++i)
      if (row <= edges_[i].last) insert(Edge(edges_[i]));
    if (active_ == 0) row = next_ < edges_.size() ? edges_[next_].first : end;
    for (; next_ < edges_.size() && edges_[next_].first == row; ++next_) insert(Edge(edges_[next_]));
    const std::span<Edge> active = edges_.first(active_);
    if (moves_ == 0) std::sort(active.begin(), active.end(), [](const Edge& a, const Edge& b) { return a.x < b.x; });
    return row;
  }

  // Edges hardly change places from row to row. Where they do, sorting them all at once is left for the end.
  void insert(const Edge& edge) {
    std::size_t place = active_++;
    for (; moves_ > 0 && place > 0 && edges_[place - 1].x > edge.x; --place, --moves_)
      edges_[place] = edges_[place - 1];
    edges_[place] = edge;
  }

  // The first row from which the same edges no longer cross all rows.
  std::int64_t endOfActive() const {
    std::int64_t end = next_ < edges_.size() ? edges_[next_].first : std::numeric_limits<std::int64_t>::max();
    for (const Edge& edge : edges_.first(active_)) end = std::min<std::int64_t>(end, edge.last + std::int64_t{1});
    return end;
  }

  Places collectPlaces() {
    const std::size_t padded = kernels::paddedCrossings(active_);
    const Places places{places_, places_ + padded};
    for (std::size_t i = 0; i < padded; ++i) {
      places.x[i] = i < active_ ? edges_[i].x : std::numeric_limits<double>::infinity();
      places.slope[i] = i < active_ ? edges_[i].slope : 0;
    }
    return places;
  }

  std::span<Edge> edges_;
  double* places_;
  std::size_t active_ = 0;
  std::size_t next_ = 0;
  std::size_t moves_ = 0;
};

}  // namespace

void drawPolygons(const Canvas& canvas, std::span<const int> counts, const int* points, std::uint32_t colour) {
  std::size_t total = 0;
  for (const int count : counts) {
    if (count < 3) return;
    total += static_cast<std::size_t>(count);
  }
  // All memory before the first pixel: where there is none, nothing is drawn.
  const std::unique_ptr<Edge[]> edges(new Edge[total]);
  const std::unique_ptr<double[]> places(new double[2 * kernels::paddedCrossings(total)]);
  std::size_t used = 0;
  visitEdges(counts, points, [&](Point a, Point b) {
    drawLine(canvas, a, b, colour);
    if (isVisible(a, b, canvas)) edges[used++] = edgeBetween(a, b);
  });
  EdgeList({edges.get(), used}, places.get()).fill(canvas, colour);
}

}  // namespace qav
