#include "drawing/Brushes.h"

#include "drawing/Canvas.h"
#include "drawing/Lines.h"

#include <array>

namespace qav {
namespace {

constexpr std::array<BrushOffset, 1> kPixel = {{{0, 0}}};
constexpr std::array<BrushOffset, 12> kRound4 = {
    {{-1, 2}, {0, 2}, {-2, 1}, {-1, 1}, {0, 1}, {1, 1}, {-2, 0}, {-1, 0}, {0, 0}, {1, 0}, {-1, -1}, {0, -1}}};
constexpr std::array<BrushOffset, 4> kSquare2 = {{{-1, 1}, {0, 1}, {-1, 0}, {0, 0}}};
constexpr std::array<BrushOffset, 2> kDiagonal2 = {{{0, 1}, {-1, 0}}};
constexpr std::array<BrushOffset, 2> kAntiDiagonal2 = {{{0, 1}, {1, 0}}};
constexpr std::array<BrushOffset, 12> kSpray12 = {
    {{0, 0}, {1, -2}, {2, 5}, {3, -7}, {5, 3}, {7, -1}, {-1, 2}, {-3, -3}, {-4, 6}, {-5, -7}, {-6, 4}, {-7, -4}}};

// The odd-sized stamps are symmetric: rows dy = r down to -r, each dx = -half(dy)..half(dy).
template <std::size_t count, class HalfWidth>
constexpr std::array<BrushOffset, count> symmetric(std::int32_t r, HalfWidth half) {
  std::array<BrushOffset, count> offsets{};
  std::size_t n = 0;
  for (std::int32_t dy = r; dy >= -r; --dy)
    for (std::int32_t dx = -half(dy); dx <= half(dy); ++dx) offsets[n++] = {dx, dy};
  return offsets;
}

constexpr auto kRound7 = symmetric<37>(3, [](std::int32_t dy) {
  return dy == 3 || dy == -3 ? 1 : dy == 2 || dy == -2 ? 2 : 3;
});
constexpr auto kSquare5 = symmetric<25>(2, [](std::int32_t) { return 2; });
constexpr auto kSquare7 = symmetric<49>(3, [](std::int32_t) { return 3; });

// From (slope * r, r) to (-slope * r, -r).
template <std::int32_t r>
constexpr std::array<BrushOffset, 2 * r + 1> diagonal(std::int32_t slope) {
  std::array<BrushOffset, 2 * r + 1> offsets{};
  std::size_t n = 0;
  for (std::int32_t dy = r; dy >= -r; --dy) offsets[n++] = {slope * dy, dy};
  return offsets;
}

constexpr auto kDiagonal5 = diagonal<2>(1), kAntiDiagonal5 = diagonal<2>(-1);
constexpr auto kDiagonal9 = diagonal<4>(1), kAntiDiagonal9 = diagonal<4>(-1);

constexpr std::span<const BrushOffset> kStamps[] = {
    kPixel,     kRound4,    kRound7,        kSquare2,       kSquare5,       kSquare7, kDiagonal2,
    kDiagonal5, kDiagonal9, kAntiDiagonal2, kAntiDiagonal5, kAntiDiagonal9, kSpray12};

}  // namespace

std::span<const BrushOffset> stampOf(QAVMMIBrush brush) {
  const auto index = static_cast<std::uint32_t>(brush);
  return index < std::size(kStamps) ? kStamps[index] : std::span<const BrushOffset>();
}

void drawStamp(const Canvas& canvas, const Point& position, std::uint32_t colour, std::span<const BrushOffset> stamp) {
  for (const BrushOffset& offset : stamp) canvas.plot(position.x + offset.dx, position.y + offset.dy, colour);
}

}  // namespace qav
