#include <cstdint>
#include <cstring>

#include "TestCard.h"

namespace qav::testcard {
namespace {

/// Letters of 5 x 7 points; a row is five bits, the leftmost the highest.
struct Glyph {
  char character;
  std::uint8_t rows[7];
};
constexpr Glyph kGlyphs[] = {
    {'A', {14, 17, 17, 31, 17, 17, 17}}, {'B', {30, 17, 17, 30, 17, 17, 30}}, {'C', {14, 17, 16, 16, 16, 17, 14}},
    {'D', {30, 17, 17, 17, 17, 17, 30}}, {'E', {31, 16, 16, 30, 16, 16, 31}}, {'F', {31, 16, 16, 30, 16, 16, 16}},
    {'G', {14, 17, 16, 23, 17, 17, 14}}, {'H', {17, 17, 17, 31, 17, 17, 17}}, {'I', {14, 4, 4, 4, 4, 4, 14}},
    {'J', {7, 2, 2, 2, 2, 18, 12}},      {'K', {17, 18, 20, 24, 20, 18, 17}}, {'L', {16, 16, 16, 16, 16, 16, 31}},
    {'M', {17, 27, 21, 21, 17, 17, 17}}, {'N', {17, 25, 21, 19, 17, 17, 17}}, {'O', {14, 17, 17, 17, 17, 17, 14}},
    {'P', {30, 17, 17, 30, 16, 16, 16}}, {'Q', {14, 17, 17, 17, 21, 18, 13}}, {'R', {30, 17, 17, 30, 20, 18, 17}},
    {'S', {15, 16, 16, 14, 1, 1, 30}},   {'T', {31, 4, 4, 4, 4, 4, 4}},       {'U', {17, 17, 17, 17, 17, 17, 14}},
    {'V', {17, 17, 17, 17, 17, 10, 4}},  {'W', {17, 17, 17, 21, 21, 21, 10}}, {'X', {17, 17, 10, 4, 10, 17, 17}},
    {'Y', {17, 17, 10, 4, 4, 4, 4}},     {'Z', {31, 1, 2, 4, 8, 16, 31}},     {'0', {14, 17, 19, 21, 25, 17, 14}},
    {'1', {4, 12, 4, 4, 4, 4, 14}},      {'2', {14, 17, 1, 2, 4, 8, 31}},     {'3', {31, 2, 4, 2, 1, 17, 14}},
    {'4', {2, 6, 10, 18, 31, 2, 2}},     {'5', {31, 16, 30, 1, 1, 17, 14}},   {'6', {6, 8, 16, 30, 17, 17, 14}},
    {'7', {31, 1, 2, 4, 8, 8, 8}},       {'8', {14, 17, 17, 14, 17, 17, 14}}, {'9', {14, 17, 17, 15, 1, 2, 12}},
};

const Glyph* glyphOf(char character) {
  for (const Glyph& glyph : kGlyphs) {
    if (glyph.character == character) return &glyph;
  }
  return nullptr;
}

struct Pen {
  int x, y, scale;
  Colour ink;
};

void write(Canvas& canvas, Pen pen, const char* text) {
  for (; *text; ++text, pen.x += 6 * pen.scale) {
    const Glyph* glyph = glyphOf(*text);
    if (!glyph) continue;
    for (int y = 0; y < 7 * pen.scale; ++y) {
      for (int x = 0; x < 5 * pen.scale; ++x) {
        if (glyph->rows[y / pen.scale] >> (4 - x / pen.scale) & 1) canvas.set(pen.x + x, pen.y + y, pen.ink);
      }
    }
  }
}

}  // namespace

void drawText(Canvas& canvas, Box box) {
  const Colour ink{24, 24, 28}, paper{252, 250, 244};
  canvas.fill(box, [&](int, int y) { return y < 84 ? paper : ink; });
  write(canvas, {box.left + 6, box.top + 6, 3, ink}, "RASTER");
  write(canvas, {box.left + 6, box.top + 34, 2, ink}, "ABC 0123");
  write(canvas, {box.left + 6, box.top + 54, 1, ink}, "THE QUICK BROWN FOX JUMPS");
  write(canvas, {box.left + 6, box.top + 64, 1, ink}, "OVER THE LAZY DOG");
  write(canvas, {box.left + 6, box.top + 74, 1, {190, 20, 20}}, "0123456789");
  write(canvas, {box.left + 6, box.top + 90, 2, paper}, "LIGHT 456");
  write(canvas, {box.left + 6, box.top + 109, 1, paper}, "SMALL LETTERS ON DARK 789");
}

}  // namespace qav::testcard
