#include <array>
#include <iterator>

#include "TestCard.h"

namespace qav::testcard {
namespace {

constexpr Colour kBlack{0, 0, 0};
constexpr Colour kWhite{255, 255, 255};

constexpr Colour kPatches[] = {
    {255, 0, 0},   {255, 128, 0},   {255, 255, 0},  {128, 255, 0}, {0, 255, 0},   {0, 255, 128},
    {0, 255, 255}, {0, 128, 255},   {0, 0, 255},    {128, 0, 255}, {255, 0, 255}, {255, 0, 128},
    {116, 81, 67}, {199, 147, 129}, {91, 122, 156}, {90, 108, 64},
};

/// A triangle wave of period 256 with rounded tips, 0..255.
int wave(int phase) {
  const int t = phase & 255;
  const int rising = t < 128 ? 2 * t : 510 - 2 * t;
  return limited(rising * rising * (765 - 2 * rising) / (255 * 255), 0, 255);
}

/// Directions that part the circle into 36 wedges, as far as 90 degrees: sine and cosine times 4096.
struct Direction {
  int x, y;
};
constexpr Direction kDirections[] = {{4096, 0},    {4034, 711},  {3849, 1401}, {3547, 2048}, {3138, 2633},
                                     {2633, 3138}, {2048, 3547}, {1401, 3849}, {711, 4034}};

int wedge(int x, int y) {
  const bool left = x < 0, up = y < 0;
  const int ax = left ? -x : x, ay = up ? -y : y;
  int count = 0;
  for (const Direction& edge : kDirections) count += ax * edge.y - ay * edge.x <= 0 ? 1 : 0;
  return count + (left ? 1 : 0) + (up ? 1 : 0);
}

}  // namespace

void drawPatches(Canvas& canvas, Box box) {
  const int count = static_cast<int>(std::size(kPatches));
  canvas.fill({box.left, box.top, box.width, 32}, [&](int x, int) { return kPatches[x * count / box.width]; });
  canvas.fill({box.left, box.top + 32, box.width, 16}, [&](int x, int) {
    const int grey = x * 255 / (box.width - 1);
    return Colour{grey, grey, grey};
  });
  canvas.fill({box.left, box.top + 48, box.width, 16}, [&](int x, int) {
    const int grey = x * 17 / box.width * 255 / 16;
    return Colour{grey, grey, grey};
  });
}

void drawZonePlate(Canvas& canvas, Box box) {
  canvas.fill(box, [&](int x, int y) {
    const int dx = x - box.width / 2, dy = y - box.height / 2;
    const int level = wave((dx * dx + dy * dy) * 128 / box.width);
    return Colour{level, level, level};
  });
}

void drawGratings(Canvas& canvas, Box box) {
  canvas.fill(box, [&](int x, int y) {
    const int period = 1 + x / 30;
    if (y < 40) return x / period % 2 ? kWhite : kBlack;
    if (y < 80) return (y - 40) / period % 2 ? kWhite : kBlack;
    const bool line = (3 * x + 8 * y) % 40 < 3 || (x % 24 == 0 && y > 90);
    return line ? Colour{180, 20, 20} : Colour{244, 240, 230};
  });
}

void drawStar(Canvas& canvas, Box box) {
  canvas.fill(box, [&](int x, int y) {
    const int dx = 2 * x + 1 - box.width, dy = 2 * y + 1 - box.height;
    if (dx * dx + dy * dy > (box.width - 4) * (box.width - 4)) return Colour{236, 232, 220};
    return wedge(dx, dy) % 2 ? Colour{16, 20, 72} : Colour{250, 250, 250};
  });
}

void drawTransparency(Canvas& canvas, Box box) {
  canvas.fill(box, [&](int x, int y) {
    const int alpha = x * 255 / (box.width - 1);
    Colour colour{255 - alpha, y * 2, alpha, alpha};
    const int dx = x - 84, dy = y - 84, fromDisc = dx * dx + dy * dy;
    if (fromDisc < 26 * 26) colour = {230, 40, 120, 128};
    if (fromDisc < 14 * 14) colour = {0, 0, 0, 0};
    if (x > 8 && x < 40 && y > 8 && y < 40) colour = {20, 160, 60, 255};
    if (x > 16 && x < 32 && y > 16 && y < 32) colour = {255, 255, 255, (x + y) % 2 ? 255 : 0};
    return colour;
  });
}

}  // namespace qav::testcard
