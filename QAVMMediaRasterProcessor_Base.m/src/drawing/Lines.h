#pragma once

#include "drawing/Brushes.h"

#include <cstdint>
#include <span>

namespace qav {

struct Canvas;

struct Point {
  std::int64_t x = 0;
  std::int64_t y = 0;
};

/// Bresenham's line between two points with 32-bit coordinates, both included. Takes time in proportion to the
/// visible pixels.
void drawLine(const Canvas& canvas, Point from, Point to, std::uint32_t colour);

/// A stamp at every point of that line.
void drawStampedLine(const Canvas& canvas, Point from, Point to, std::uint32_t colour,
                     std::span<const BrushOffset> stamp);

}  // namespace qav
