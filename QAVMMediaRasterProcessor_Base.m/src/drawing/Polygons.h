#pragma once

#include <cstdint>
#include <span>

namespace qav {

struct Canvas;

/// Outlines the closed polygons and fills between their edges by the even-odd rule. `counts` has the vertices of each
/// polygon, `points` the x and y of all. Nothing is drawn when a count is below 3.
void drawPolygons(const Canvas& canvas, std::span<const int> counts, const int* points, std::uint32_t colour);

}  // namespace qav
