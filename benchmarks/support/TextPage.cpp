#include "support/TextPage.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>

namespace qav::bench {
namespace {

constexpr int kStride = kPageWidth / 8;
constexpr int kGlyphWidth = 22, kGlyphHeight = 32;
static_assert(kPageWidth % 8 == 0);

using Glyph = std::vector<std::uint8_t>;

// A few straight and curved strokes with a pen of four dots.
Glyph drawGlyph(std::minstd_rand& random) {
  Glyph glyph(kGlyphWidth * kGlyphHeight);
  const auto coordinate = [&](int size) {
    return 3.0 + static_cast<double>(random() % static_cast<unsigned>(size - 6));
  };
  const auto strokes = 2 + random() % 3;
  for (unsigned s = 0; s < strokes; ++s) {
    const double x0 = coordinate(kGlyphWidth), y0 = coordinate(kGlyphHeight), x1 = coordinate(kGlyphWidth),
                 y1 = coordinate(kGlyphHeight), bend = static_cast<double>(random() % 9) - 4;
    for (double t = 0; t <= 1; t += 0.01) {
      const int cx = static_cast<int>(x0 + (x1 - x0) * t + bend * std::sin(3.1416 * t));
      const int cy = static_cast<int>(y0 + (y1 - y0) * t);
      for (int y = std::max(0, cy - 2); y < std::min(kGlyphHeight, cy + 2); ++y)
        for (int x = std::max(0, cx - 2); x < std::min(kGlyphWidth, cx + 2); ++x)
          glyph[static_cast<std::size_t>(y * kGlyphWidth + x)] = 1;
    }
  }
  return glyph;
}

std::vector<std::uint8_t> paint() {
  std::vector<std::uint8_t> page(static_cast<std::size_t>(kStride) * kPageHeight);
  std::minstd_rand random(3);
  std::vector<Glyph> alphabet;
  for (int i = 0; i < 60; ++i) alphabet.push_back(drawGlyph(random));
  for (int top = 240; top + kGlyphHeight < kPageHeight - 240; top += 50) {
    const int end = random() % 6 == 0 ? kPageWidth / 2 : kPageWidth - 200;
    for (int left = 200; left + kGlyphWidth < end; left += 26) {
      if (random() % 6 == 0) continue;
      const Glyph& glyph = alphabet[random() % alphabet.size()];
      for (int i = 0; i < kGlyphWidth * kGlyphHeight; ++i) {
        if (!glyph[static_cast<std::size_t>(i)]) continue;
        const int x = left + i % kGlyphWidth, y = top + i / kGlyphWidth;
        std::uint8_t& byte = page[static_cast<std::size_t>(y * kStride + x / 8)];
        byte = static_cast<std::uint8_t>(byte | 0x80 >> x % 8);
      }
    }
  }
  return page;
}

}  // namespace

const std::vector<std::uint8_t>& textPage() {
  static const std::vector<std::uint8_t> page = paint();
  return page;
}

}  // namespace qav::bench
