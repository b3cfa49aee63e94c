#include <cstdint>

#include "TestCard.h"

namespace qav::testcard {
namespace {

constexpr int kHorizon = 168;

std::uint32_t hash(std::uint32_t x, std::uint32_t y) {
  std::uint32_t h = x * 0x9E3779B1u ^ (y + 0x7F4A7C15u) * 0x85EBCA77u;
  h = (h ^ (h >> 15)) * 0x2C1B3C6Du;
  return h ^ (h >> 13);
}

/// Random values on a lattice of 2^bits pixels with smooth transitions between them, 0..255.
int smoothNoise(int x, int y, int bits) {
  const auto step = [bits](int at) {
    const int t = (at & ((1 << bits) - 1)) * 256 >> bits;
    return t * t * (768 - 2 * t) >> 16;
  };
  const auto corner = [=](int right, int down) {
    return static_cast<int>(
        hash(static_cast<std::uint32_t>((x >> bits) + right), static_cast<std::uint32_t>((y >> bits) + down)) >> 24);
  };
  const int across = step(x);
  const int top = corner(0, 0) + (corner(1, 0) - corner(0, 0)) * across / 256;
  const int bottom = corner(0, 1) + (corner(1, 1) - corner(0, 1)) * across / 256;
  return top + (bottom - top) * step(y) / 256;
}

/// Octaves of noise, from coarse to fine, 0..255.
int texture(int x, int y, int bits) {
  return (8 * smoothNoise(x, y, bits) + 4 * smoothNoise(x + 977, y, bits - 1) + 2 * smoothNoise(x, y + 733, bits - 2) +
          smoothNoise(x + 389, y + 241, bits - 3)) /
         15;
}

Colour sky(int x, int y) {
  const Colour blue = mix({58, 110, 190}, {246, 214, 172}, limited(y * 256 / kHorizon, 0, 256));
  const int dx = x - 492, dy = y - 78, distance = dx * dx + dy * dy;
  const Colour lit = mix(blue, {255, 236, 176}, limited(256 - distance / 40, 0, 200));
  const Colour disc = mix(lit, {255, 250, 228}, limited((1000 - distance) * 2, 0, 256));
  const int cloud = limited((texture(x, 2 * y, 6) - 132) * 5, 0, 220);
  return mix(disc, {250, 246, 242}, cloud * limited(kHorizon + 20 - y, 0, 128) / 128);
}

int ridge(int x, int base, int bits, int seed) { return base - texture(x + seed, seed, bits) / 3; }

Colour field(int x, int y) {
  const int depth = limited((y - kHorizon) * 2, 0, 256);
  const Colour grass = mix({142, 150, 92}, {48, 92, 36}, depth);
  const int grain =
      texture(x, 3 * y, 4) - 128 +
      (static_cast<int>(hash(static_cast<std::uint32_t>(x), 7u + static_cast<std::uint32_t>(y)) >> 27) - 16);
  const Colour ploughed = mix(grass, {120, 78, 44}, limited((texture(x + 300, 4 * y, 6) - 118) * 6, 0, 200));
  const int light = grain * (64 + depth / 2) / 256;
  return {ploughed.red + light, ploughed.green + light, ploughed.blue + light / 2, 255};
}

Colour scene(int x, int y) {
  if (y < ridge(x, kHorizon, 7, 4000)) return sky(x, y);
  if (y < ridge(x, kHorizon + 34, 6, 9000)) return mix({112, 128, 160}, {86, 96, 118}, texture(x, y, 4));
  if (y < ridge(x, kHorizon + 56, 5, 1500)) return mix({52, 84, 66}, {28, 52, 40}, texture(x, y, 3));
  return field(x, y);
}

/// A ball lit from the upper left, with a highlight.
void drawSphere(Canvas& canvas, int centreX, int centreY, int radius, Colour colour) {
  for (int y = -radius; y <= radius; ++y) {
    for (int x = -radius; x <= radius; ++x) {
      if (x * x + y * y > radius * radius) continue;
      const int hx = 2 * x + radius, hy = 2 * y + radius;
      const int lit = (hx * hx + hy * hy) * 64 / (radius * radius);
      const Colour shaded = mix(colour, {0, 0, 0}, limited(lit * 2 / 5, 0, 235));
      canvas.set(centreX + x, centreY + y, mix(shaded, {255, 255, 255}, limited(240 - lit * 10, 0, 240)));
    }
  }
}

}  // namespace

void drawLandscape(Canvas& canvas, Box box) {
  canvas.fill(box, scene);
  drawSphere(canvas, 96, 240, 44, {216, 24, 30});
  drawSphere(canvas, 190, 258, 30, {250, 200, 0});
  drawSphere(canvas, 252, 268, 20, {20, 60, 220});
  drawSphere(canvas, 560, 250, 36, {190, 190, 190});
}

}  // namespace qav::testcard
