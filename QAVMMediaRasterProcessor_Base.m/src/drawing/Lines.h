#pragma once

#include <QAVMMIHelperRGBA.h>

#include <cstdint>

namespace qav {

struct Canvas;

struct Point {
  std::int64_t x = 0;
  std::int64_t y = 0;
};

/// Bresenham's line between two points with 32-bit coordinates, both included. Takes time in proportion to the
/// visible pixels.
void drawLine(const Canvas& canvas, Point from, Point to, std::uint32_t colour);

/// Stamps a brush at every point of that line.
void drawStampedLine(const Canvas& canvas, Point from, Point to, QAVMMIBrush brush, std::uint32_t colour);

}  // namespace qav
