#pragma once

#include <QAVMMIHelperRGBA.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

namespace qav::test {

__extension__ using Int128 = __int128;

/// The drawing operations written down as they are defined: pixel by pixel, without any short cut.
struct PlainPicture {
  std::int64_t width, height;
  std::vector<std::uint32_t> pixels;

  std::uint32_t& at(std::int64_t x, std::int64_t y) { return pixels[static_cast<std::size_t>(y * width + x)]; }

  void plot(std::int64_t x, std::int64_t y, std::uint32_t colour) {
    if (x >= 0 && x < width && y >= 0 && y < height) at(x, y) = colour;
  }

  void hline(std::int64_t y, std::int64_t x1, std::int64_t x2, std::uint32_t colour) {
    if (y < 0 || y >= height) return;
    std::int64_t start = 0, end = 0;
    if (x1 < 0) {
      if (x2 < 0) return;
      end = std::min(x2, width - 1);
    } else {
      start = std::min(x1, width - 1);
      end = x2 < 0 ? 0 : std::min(x2, width - 1);
    }
    if (start == end) return;
    for (std::int64_t x = std::min(start, end); x <= std::max(start, end); ++x) at(x, y) = colour;
  }

  /// Calls visit(x, y) for the points of a line; those of a very long one only where they can matter. (Inlined with
  /// constant ends, GCC 12 warns of an overflow in the branch not taken.)
  template <class Visit>
  [[gnu::noinline]] void walk(std::int64_t x1, std::int64_t y1, std::int64_t x2, std::int64_t y2, Visit visit) {
    const std::int64_t sx = x1 <= x2 ? 1 : -1, sy = y1 <= y2 ? 1 : -1;
    const std::int64_t dx = std::abs(x2 - x1), dy = std::abs(y2 - y1);
    const std::int64_t major = std::max(dx, dy), minor = std::min(dx, dy);
    if (major > 20000) {
      const std::int64_t start = dx >= dy ? x1 : y1, sign = dx >= dy ? sx : sy;
      for (std::int64_t along = -8; along < std::max(width, height) + 8; ++along) {
        const std::int64_t i = (along - start) * sign;
        if (i < 0 || i > major) continue;
        const auto m = static_cast<std::int64_t>((Int128{major >> 1} + Int128{i} * minor) / major);
        dx >= dy ? visit(along, y1 + sy * m) : visit(x1 + sx * m, along);
      }
      return;
    }
    std::int64_t error = major >> 1;
    for (std::int64_t points = major + 1; points > 0; --points) {
      visit(x1, y1);
      error += minor;
      const bool step = error >= major;
      if (step) error -= major;
      if (dx >= dy || step) x1 += sx;
      if (dx < dy || step) y1 += sy;
    }
  }

  void line(int x1, int y1, int x2, int y2, std::uint32_t colour, int brush) {
    walk(x1, y1, x2, y2, [&](std::int64_t x, std::int64_t y) { stamp(x, y, colour, brush); });
  }

  void stamp(std::int64_t x, std::int64_t y, std::uint32_t colour, int brush);

  void rectangle(int x1, int y1, int x2, int y2, std::uint32_t colour, bool filled) {
    if (!filled) {
      line(x1, y1, x2, y1, colour, 0);
      line(x2, y1, x2, y2, colour, 0);
      line(x2, y2, x1, y2, colour, 0);
      line(x1, y2, x1, y1, colour, 0);
      return;
    }
    const std::int64_t bottom = height - 1;
    if (y1 < 0 && y2 < 0) return;
    const std::int64_t first = y1 < 0 ? 0 : std::min<std::int64_t>(y1, bottom);
    const std::int64_t last = y2 < 0 ? 0 : std::min<std::int64_t>(y2, bottom);
    if (first == last) return;
    for (std::int64_t y = std::min(first, last); y <= std::max(first, last); ++y) hline(y, x1, x2, colour);
  }

  void ellipse(std::int64_t cx, std::int64_t cy, int rx, int ry, std::uint32_t colour, bool filled) {
    const auto output = [&](std::int64_t x, std::int64_t k) {
      if (filled) {
        hline(cy + k, cx - x, cx + x, colour);
        hline(cy - k, cx - x, cx + x, colour);
      } else {
        for (const std::int64_t side : {x, -x})
          for (const std::int64_t row : {k, -k}) plot(cx + side, cy + row, colour);
      }
    };
    const Int128 A = Int128{ry} * ry, B = Int128{rx} * rx;
    std::int64_t x = rx, k = 0;
    Int128 t = 4 * A * rx, d1 = 2 * B - 2 * A * rx + (A >> 1), d2 = (B >> 1) - t + 2 * A, s = 0;
    while (d2 < 0) {
      output(x, k);
      k += 1, s += 4 * B;
      if (d1 < 0)
        d2 += s, d1 += 2 * B + s;
      else
        t -= 4 * A, x -= 1, d1 += 2 * B + s - t, d2 += 2 * A + s - t;
    }
    Int128 e = 6 * A - t;
    do {
      output(x, k);
      x -= 1, t -= 4 * A;
      if (d2 < 0)
        s += 4 * B, k += 1, d2 += 2 * A + s - t;
      else
        d2 += e;
      e += 4 * A;
    } while (x >= 0);
  }

  void fill(int x, int y, std::uint32_t colour);
  void fillArea(const std::vector<int>& counts, const int* points, std::uint32_t colour);
};

inline void PlainPicture::stamp(std::int64_t x, std::int64_t y, std::uint32_t colour, int brush) {
  const auto rows = [&](int r, auto half) {
    for (int dy = -r; dy <= r; ++dy)
      for (int dx = -half(dy); dx <= half(dy); ++dx) plot(x + dx, y + dy, colour);
  };
  const auto list = [&](std::initializer_list<std::pair<int, int>> offsets) {
    for (const auto& [dx, dy] : offsets) plot(x + dx, y + dy, colour);
  };
  const auto diagonal = [&](int r, int sign) {
    for (int i = -r; i <= r; ++i) plot(x + sign * i, y + i, colour);
  };
  switch (brush) {
    case 0:
      return plot(x, y, colour);
    case 1:
      for (int dx = -2; dx <= 1; ++dx) list({{dx, 0}, {dx, 1}});
      return list({{-1, 2}, {0, 2}, {-1, -1}, {0, -1}});
    case 2:
      return rows(3, [](int dy) { return std::min(3, 4 - std::abs(dy) + (std::abs(dy) < 2 ? 1 : 0)); });
    case 3:
      return list({{-1, 0}, {0, 0}, {-1, 1}, {0, 1}});
    case 4:
      return rows(2, [](int) { return 2; });
    case 5:
      return rows(3, [](int) { return 3; });
    case 6:
      return list({{0, 1}, {-1, 0}});
    case 7:
      return diagonal(2, 1);
    case 8:
      return diagonal(4, 1);
    case 9:
      return list({{0, 1}, {1, 0}});
    case 10:
      return diagonal(2, -1);
    case 11:
      return diagonal(4, -1);
    case 12:
      return list(
          {{0, 0}, {1, -2}, {2, 5}, {3, -7}, {5, 3}, {7, -1}, {-1, 2}, {-3, -3}, {-4, 6}, {-5, -7}, {-6, 4}, {-7, -4}});
    default:
      return;
  }
}

inline void PlainPicture::fill(int x0, int y0, std::uint32_t colour) {
  if (x0 < 0 || x0 >= width || y0 < 0 || y0 >= height || at(x0, y0) == colour) return;
  struct Segment {
    std::int64_t row, left, right, direction;
  };
  const std::uint32_t old = at(x0, y0);
  std::vector<Segment> stack;
  const auto push = [&](std::int64_t row, std::int64_t left, std::int64_t right, std::int64_t direction) {
    if (stack.size() < 10000 && row + direction >= 0 && row + direction <= height - 1)
      stack.push_back({row, left, right, direction});
  };
  push(y0, x0, x0, 1);
  push(y0 + 1, x0, x0, -1);
  while (!stack.empty()) {
    const auto [row, x1, x2, d] = stack.back();
    stack.pop_back();
    const std::int64_t r = row + d;
    std::int64_t x = x1, l = 0;
    for (; x >= 0 && at(x, r) == old; --x) at(x, r) = colour;
    bool run = x < x1;
    if (run) {
      l = x + 1;
      if (l < x1) push(r, l, x1 - 1, -d);
      x = x1 + 1;
    }
    do {
      if (run) {
        for (; x < width && at(x, r) == old; ++x) at(x, r) = colour;
        push(r, l, x - 1, d);
        if (x > x2 + 1) push(r, x2 + 1, x - 1, -d);
      }
      for (++x; x <= x2 && at(x, r) != old; ++x) {
      }
      l = x;
      run = true;
    } while (x <= x2);
  }
}

inline void PlainPicture::fillArea(const std::vector<int>& counts, const int* points, std::uint32_t colour) {
  struct Record {
    double top, start, slope, current, active, bottom;
  };
  const auto saturated = [](double v) { return std::trunc(std::clamp(v, -2147483648.0, 2147483647.0)); };
  for (const int count : counts)
    if (count < 3) return;
  std::vector<Record> records;
  double largest = 0;
  for (const int count : counts) {
    for (int i = 0; i < count; ++i) {
      const int *a = points + 2 * i, *b = points + 2 * ((i + 1) % count);
      line(a[0], a[1], b[0], b[1], colour, 0);
      const double xa = a[0], ya = a[1], xb = b[0], yb = b[1];
      largest = std::max({largest, ya, yb});
      Record e = {std::max(ya, yb), 0, DBL_MAX, 0, 0, std::min(ya, yb)};
      if (ya != yb) {
        e.slope = (xb - xa) / (yb - ya);
        if (xa >= xb)
          e.current = e.slope < 0 ? xa : xb;
        else if (e.slope > 0)
          e.current = std::fabs(e.slope) > 1 ? xa + 1 : xa;
        else
          e.current = xb;
      }
      records.push_back(e);
    }
    points += 2 * count;
  }
  const double lastRow = std::min(static_cast<double>(height), largest);
  for (std::int64_t y = 0; static_cast<double>(y) <= lastRow; ++y) {
    const auto row = static_cast<double>(y);
    std::vector<double> crossings;
    for (Record& e : records) {
      if (e.active != 0) {
        e.current += e.slope;
        if (e.top <= row || e.bottom > row) e.active = 0;
      } else if (e.top >= row && e.slope != DBL_MAX && e.bottom <= row) {
        e.active = 1;
      }
      if (e.active != 0) crossings.push_back(saturated(e.current));
    }
    std::sort(crossings.begin(), crossings.end());
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
      const auto clamped = [&](double v) {
        return static_cast<std::int64_t>(std::clamp(v, 0.0, static_cast<double>(width - 1)));
      };
      hline(y, clamped(crossings[i]), clamped(crossings[i + 1]), colour);
    }
  }
}

}  // namespace qav::test
