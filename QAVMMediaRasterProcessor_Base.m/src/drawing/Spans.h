#pragma once

#include <cstdint>

namespace qav {

struct Canvas;

/// Columns x1 to x2 of row y in either order, clamped to the canvas. A span that is one column wide after clamping is
/// left out.
void drawSpan(const Canvas& canvas, std::int64_t y, std::int64_t x1, std::int64_t x2, std::uint32_t colour);

/// Such spans in the rows y1 to y2, which are clamped likewise: nothing is drawn when one row remains.
void fillRectangle(const Canvas& canvas, std::int64_t y1, std::int64_t y2, std::int64_t x1, std::int64_t x2,
                   std::uint32_t colour);

}  // namespace qav
