#include "kernels/VariableDiffusion.h"

#include "kernels/VariableDiffusionTable.h"

namespace qav::kernels {
namespace {

constexpr int kFraction = 22;
constexpr std::int32_t kWhiteFrom = 128 << kFraction;

std::uint32_t times(std::int32_t error, std::int32_t share) {
  return static_cast<std::uint32_t>(error) * static_cast<std::uint32_t>(share);
}

// Has a value computed here, whether or not it will be chosen: the choice is then a move, not a branch. No processor
// can foretell how a picture's pixels turn out.
template <class Value>
Value ready(Value value) {
  __asm__("" : "+r"(value));
  return value;
}

// The sums wrap: pictures exist whose errors grow beyond 32 bits.
//
// Everything hangs on one chain, from a pixel's sum to its error to the next pixel's sum. So the next sum is prepared
// for both outcomes while the product with the unreduced level is on its way.
template <std::ptrdiff_t direction>
const DiffusionShares* diffuseRow(std::uint8_t* pixel, std::size_t width, std::uint32_t* sum,
                                  const DiffusionShares* shares) {
  std::uint32_t total = (static_cast<std::uint32_t>(*pixel) << kFraction) + *sum;
  std::uint32_t below = 0;
  for (std::size_t left = width; left > 0; --left, pixel += direction, sum += direction) {
    const unsigned value = *pixel;
    const unsigned distance = value < 128 ? value : 255 - value;
    const DiffusionShares* const own = ready(&kVariableDiffusionShares[distance]);
    shares = distance == 0 ? shares : own;
    const DiffusionShares now = *shares;
    const std::uint8_t following = left > 1 ? pixel[direction] : 0;
    const std::uint32_t black = ready((static_cast<std::uint32_t>(following) << kFraction) + sum[direction]);
    const std::uint32_t white = ready(black - times(255, now.right));

    const std::int32_t level = static_cast<std::int32_t>(total) >> kFraction;
    const std::uint32_t base = static_cast<std::int32_t>(total) >= kWhiteFrom ? white : black;
    total = times(level, now.right) + base;

    const std::int32_t whiteMask = (127 - level) >> 31;
    const std::int32_t error = level - (whiteMask & 255);
    *pixel = static_cast<std::uint8_t>(whiteMask);
    sum[-direction] = below + times(error, now.downLeft);
    below = times(error, now.down);
  }
  sum[-direction] = below;
  return shares;
}

}  // namespace

void diffuseVariably(std::uint8_t* pixels, std::size_t width, std::size_t height, std::uint32_t* sums) noexcept {
  if (width == 0) return;
  const DiffusionShares* shares = &kVariableDiffusionShares[0];
  for (std::size_t y = 0; y < height; ++y, pixels += width)
    shares = y % 2 == 0 ? diffuseRow<1>(pixels, width, sums + 1, shares)
                        : diffuseRow<-1>(pixels + width - 1, width, sums + width, shares);
}

}  // namespace qav::kernels
