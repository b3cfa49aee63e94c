#pragma once

#include "support/Comparison.h"

#include <array>
#include <cmath>
#include <random>
#include <vector>

/// What the drawing benchmarks draw, the same for every library.
namespace qav::bench {

/// Ends x1, y1, x2, y2 of 256 lines across the picture.
inline const std::vector<std::array<int, 4>>& longLines() {
  static const std::vector<std::array<int, 4>> lines = [] {
    std::minstd_rand random(4);
    std::vector<std::array<int, 4>> made(256);
    for (auto& line : made)
      line = {static_cast<int>(random() % 400), static_cast<int>(random() % kHeight),
              kWidth - 1 - static_cast<int>(random() % 400), static_cast<int>(random() % kHeight)};
    for (std::size_t i = 0; i < made.size(); i += 2)
      made[i] = {static_cast<int>(random() % kWidth), static_cast<int>(random() % 200),
                 static_cast<int>(random() % kWidth), kHeight - 1 - static_cast<int>(random() % 200)};
    return made;
  }();
  return lines;
}

struct EllipseScene {
  int cx = kWidth / 2, cy = kHeight / 2, rx = 900, ry = 500;
};

/// A star that crosses itself, x and y of its vertices.
inline const std::vector<int>& star() {
  static const std::vector<int> points = [] {
    std::vector<int> made;
    for (int i = 0; i < 17; ++i) {
      const double angle = 2 * 3.14159265358979 * 7 * i / 17;
      made.push_back(kWidth / 2 + static_cast<int>(900 * std::sin(angle)));
      made.push_back(kHeight / 2 - static_cast<int>(520 * std::cos(angle)));
    }
    return made;
  }();
  return points;
}

/// The pictures that blending takes by turns, rows kBlendShift apart in one photograph: always the same one would soon
/// be all that the target holds.
inline constexpr int kBlendShift = 64;
inline const std::uint8_t* nextBlendSource() {
  static bool second = false;
  second = !second;
  return photograph(kWidth, kHeight + kBlendShift, 4).data() + (second ? std::size_t{kBlendShift} * kWidth * 4 : 0);
}

/// A maze of corridors 6 pixels wide between walls 2 pixels thick; every corridor can be reached from (2, 2).
inline const std::vector<std::uint32_t>& maze() {
  static const std::vector<std::uint32_t> pixels = [] {
    std::minstd_rand random(9);
    std::vector<std::uint32_t> made(std::size_t{kWidth} * kHeight, 1);
    const auto clear = [&](int x0, int y0, int width, int height) {
      for (int y = y0; y < y0 + height; ++y)
        for (int x = x0; x < x0 + width; ++x)
          made[static_cast<std::size_t>(y) * kWidth + static_cast<std::size_t>(x)] = 0xFFFFFFFFu;
    };
    for (int y = 0; y + 8 <= kHeight; y += 8) {
      for (int x = 0; x + 8 <= kWidth; x += 8) {
        clear(x + 2, y + 2, 6, 6);
        const bool left = y == 0 || (x > 0 && random() % 2 == 0);
        if (left && x > 0) clear(x, y + 2, 2, 6);
        if (!left) clear(x + 2, y, 6, 2);
      }
    }
    return made;
  }();
  return pixels;
}

}  // namespace qav::bench
