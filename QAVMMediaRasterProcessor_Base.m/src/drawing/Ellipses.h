#pragma once

#include <cstdint>

namespace qav {

struct Canvas;
struct Point;

/// The points of a midpoint ellipse with 32-bit radii around a centre with 32-bit coordinates.
void drawEllipse(const Canvas& canvas, const Point& centre, std::int64_t rx, std::int64_t ry, std::uint32_t colour);
/// The spans between them; rows of one pixel are left out.
void fillEllipse(const Canvas& canvas, const Point& centre, std::int64_t rx, std::int64_t ry, std::uint32_t colour);

}  // namespace qav
