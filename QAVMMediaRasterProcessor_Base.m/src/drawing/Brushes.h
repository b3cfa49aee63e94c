#pragma once

#include <QAVMMIHelperRGBA.h>

#include <cstdint>
#include <span>

namespace qav {

struct Canvas;
struct Point;

struct BrushOffset {
  std::int32_t dx;
  std::int32_t dy;
};

/// No offset of a brush is larger, in either direction.
inline constexpr std::int64_t kBrushReach = 7;

/// The pixels of a brush, relative to its position; none for an unknown brush.
std::span<const BrushOffset> stampOf(QAVMMIBrush brush);

void drawStamp(const Canvas& canvas, const Point& position, std::uint32_t colour, std::span<const BrushOffset> stamp);

}  // namespace qav
