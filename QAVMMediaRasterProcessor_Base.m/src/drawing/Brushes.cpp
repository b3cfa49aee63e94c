#include "drawing/Brushes.h"

#include <algorithm>

namespace qav {
namespace {

constexpr StampRow kPixel[] = {{0, 0, 0}};
constexpr StampRow kRound4[] = {{2, -1, 0}, {1, -2, 1}, {0, -2, 1}, {-1, -1, 0}};
constexpr StampRow kRound7[] = {{3, -1, 1}, {2, -2, 2}, {1, -3, 3}, {0, -3, 3}, {-1, -3, 3}, {-2, -2, 2}, {-3, -1, 1}};
constexpr StampRow kSquare2[] = {{1, -1, 0}, {0, -1, 0}};
constexpr StampRow kSquare5[] = {{2, -2, 2}, {1, -2, 2}, {0, -2, 2}, {-1, -2, 2}, {-2, -2, 2}};
constexpr StampRow kSquare7[] = {{3, -3, 3}, {2, -3, 3}, {1, -3, 3}, {0, -3, 3}, {-1, -3, 3}, {-2, -3, 3}, {-3, -3, 3}};
constexpr StampRow kDiagonal2[] = {{1, 0, 0}, {0, -1, -1}};
constexpr StampRow kDiagonal5[] = {{2, 2, 2}, {1, 1, 1}, {0, 0, 0}, {-1, -1, -1}, {-2, -2, -2}};
constexpr StampRow kDiagonal9[] = {{4, 4, 4},    {3, 3, 3},    {2, 2, 2},    {1, 1, 1},   {0, 0, 0},
                                   {-1, -1, -1}, {-2, -2, -2}, {-3, -3, -3}, {-4, -4, -4}};
constexpr StampRow kAntiDiagonal2[] = {{1, 0, 0}, {0, 1, 1}};
constexpr StampRow kAntiDiagonal5[] = {{2, -2, -2}, {1, -1, -1}, {0, 0, 0}, {-1, 1, 1}, {-2, 2, 2}};
constexpr StampRow kAntiDiagonal9[] = {{4, -4, -4}, {3, -3, -3}, {2, -2, -2}, {1, -1, -1}, {0, 0, 0},
                                       {-1, 1, 1},  {-2, 2, 2},  {-3, 3, 3},  {-4, 4, 4}};
constexpr StampRow kSpray12[] = {{0, 0, 0},   {-2, 1, 1},   {5, 2, 2},   {-7, 3, 3},   {3, 5, 5},   {-1, 7, 7},
                                 {2, -1, -1}, {-3, -3, -3}, {6, -4, -4}, {-7, -5, -5}, {4, -6, -6}, {-4, -7, -7}};

constexpr std::span<const StampRow> kStamps[] = {kPixel,         kRound4,        kRound7,    kSquare2,   kSquare5,
                                                 kSquare7,       kDiagonal2,     kDiagonal5, kDiagonal9, kAntiDiagonal2,
                                                 kAntiDiagonal5, kAntiDiagonal9, kSpray12};

}  // namespace

std::span<const StampRow> stampOf(QAVMMIBrush brush) {
  const auto index = static_cast<std::uint32_t>(brush);
  return index < std::size(kStamps) ? kStamps[index] : std::span<const StampRow>();
}

void StampPainter::operator()(std::int64_t y, std::int64_t x1, std::int64_t x2) const {
  for (const StampRow& row : stamp_) {
    // Neighbouring stamps overlap or touch, so what they cover together has no gaps.
    const std::int64_t first = std::max<std::int64_t>(x1 + row.left, 0);
    const std::int64_t last = std::min<std::int64_t>(x2 + row.right, canvas_.width - 1);
    const std::int64_t target = y + row.dy;
    if (first > last || target < 0 || target >= canvas_.height) continue;
    fill_(canvas_.at(first, target), static_cast<std::size_t>(last - first + 1), colour_);
  }
}

}  // namespace qav
