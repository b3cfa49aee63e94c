#include "drawing/Ellipses.h"

#include "drawing/Canvas.h"
#include "drawing/Lines.h"
#include "drawing/Spans.h"

#include <algorithm>
#include <cstdlib>

namespace qav {
namespace {

__extension__ using Int128 = __int128;

// Up to this radius every term of the walk fits 64 bits with one to spare; 128 hold those of all 32-bit radii.
constexpr std::int64_t kLargestRadiusIn64Bits = 1 << 20;

// Visits (x, k), the distances from the centre of one quarter's points, x falling from rx to 0 and k rising from 0.
// First k rises with every point, then x falls with every point. Ends early when visit answers false.
template <class Int, class Visit>
void walkQuarter(std::int64_t rx, std::int64_t ry, Visit visit) {
  const Int a = Int{ry} * ry, b = Int{rx} * rx;
  Int t = 4 * a * rx, s = 0;
  Int d1 = 2 * b - 2 * a * rx + (a >> 1);
  Int d2 = (b >> 1) - t + 2 * a;
  std::int64_t x = rx, k = 0;
  while (d2 < 0) {
    if (!visit(x, k)) return;
    ++k;
    s += 4 * b;
    if (d1 < 0) {
      d2 += s;
      d1 += 2 * b + s;
    } else {
      t -= 4 * a;
      --x;
      d1 += 2 * b + s - t;
      d2 += 2 * a + s - t;
    }
  }
  Int e = 6 * a - t;
  do {
    if (!visit(x, k)) return;
    --x;
    t -= 4 * a;
    if (d2 < 0) {
      s += 4 * b;
      ++k;
      d2 += 2 * a + s - t;
    } else {
      d2 += e;
    }
    e += 4 * a;
  } while (x >= 0);
}

// Calls draw(x, k) for the points of a quarter while later ones can still be seen.
template <class Draw>
void drawQuarters(const Canvas& canvas, const Point& centre, std::int64_t rx, std::int64_t ry, Draw draw) {
  const std::int64_t reach = std::abs(rx);
  if (canvas.height < 1 || centre.x + reach < 0 || centre.x - reach >= canvas.width) return;
  const auto visit = [&](std::int64_t x, std::int64_t k) {
    draw(x, k);
    return centre.y + k < canvas.height || centre.y - k >= 0;
  };
  if (std::max(reach, std::abs(ry)) <= kLargestRadiusIn64Bits)
    walkQuarter<std::int64_t>(rx, ry, visit);
  else
    walkQuarter<Int128>(rx, ry, visit);
}

}  // namespace

void drawEllipse(const Canvas& canvas, const Point& centre, std::int64_t rx, std::int64_t ry, std::uint32_t colour) {
  drawQuarters(canvas, centre, rx, ry, [&](std::int64_t x, std::int64_t k) {
    canvas.plot(centre.x + x, centre.y + k, colour);
    canvas.plot(centre.x + x, centre.y - k, colour);
    canvas.plot(centre.x - x, centre.y + k, colour);
    canvas.plot(centre.x - x, centre.y - k, colour);
  });
}

void fillEllipse(const Canvas& canvas, const Point& centre, std::int64_t rx, std::int64_t ry, std::uint32_t colour) {
  const SpanPainter paint(canvas, colour);
  std::int64_t lastRow = -1;
  drawQuarters(canvas, centre, rx, ry, [&](std::int64_t x, std::int64_t k) {
    // The first visit of a row covers the later ones.
    if (k == lastRow) return;
    lastRow = k;
    paint(centre.y + k, centre.x - x, centre.x + x);
    paint(centre.y - k, centre.x - x, centre.x + x);
  });
}

}  // namespace qav
