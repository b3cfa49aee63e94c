#include "kernels/VariableDiffusion.h"

#include "kernels/VariableDiffusionTable.h"

#include <array>

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

// The shares by the pixel's value, beside what a white pixel takes from its neighbour to the right.
struct Weights {
  std::int32_t right, downLeft, down, rightOfWhite;
};

constexpr std::array<Weights, 256> weightsByValue() {
  std::array<Weights, 256> weights{};
  for (std::size_t value = 1; value < 255; ++value) {
    const DiffusionShares& shares = kVariableDiffusionShares[value < 128 ? value : 255 - value];
    weights[value] = {shares.right, shares.downLeft, shares.down, 255 * shares.right};
  }
  return weights;
}

constexpr std::array<Weights, 256> kWeights = weightsByValue();

// The sums wrap: pictures exist whose errors grow beyond 32 bits.
//
// Everything hangs on one chain, from a pixel's sum to its error to the next pixel's sum. So the next sum is prepared
// for both outcomes while the product with the unreduced level is on its way.
template <std::ptrdiff_t direction>
const Weights* diffuseRow(std::uint8_t* pixel, std::size_t width, std::uint32_t* sum, const Weights* weights) {
  std::uint32_t value = *pixel;
  std::uint32_t total = (value << kFraction) + *sum;
  std::uint32_t below = 0;
  const auto diffuse = [&](std::uint32_t following) {
    const Weights* const own = ready(&kWeights[value]);
    weights = value - 1 < 254 ? own : weights;
    const std::uint32_t black = ready((following << kFraction) + sum[direction]);
    const std::uint32_t white = ready(black - static_cast<std::uint32_t>(weights->rightOfWhite));

    const std::int32_t level = static_cast<std::int32_t>(total) >> kFraction;
    const std::int32_t levelOfWhite = ready(level - 255);
    const bool isWhite = static_cast<std::int32_t>(total) >= kWhiteFrom;
    const std::int32_t error = isWhite ? levelOfWhite : level;
    total = times(level, weights->right) + (isWhite ? white : black);

    *pixel = static_cast<std::uint8_t>(-static_cast<int>(isWhite));
    sum[-direction] = below + times(error, weights->downLeft);
    below = times(error, weights->down);
    value = following;
    pixel += direction;
    sum += direction;
  };
  for (std::size_t left = width - 1; left > 0; --left) diffuse(pixel[direction]);
  diffuse(0);
  sum[-direction] = below;
  return weights;
}

}  // namespace

void diffuseVariably(std::uint8_t* pixels, std::size_t width, std::size_t height, std::uint32_t* sums) noexcept {
  if (width == 0) return;
  const Weights* weights = kWeights.data();
  for (std::size_t y = 0; y < height; ++y, pixels += width)
    weights = y % 2 == 0 ? diffuseRow<1>(pixels, width, sums + 1, weights)
                         : diffuseRow<-1>(pixels + width - 1, width, sums + width, weights);
}

}  // namespace qav::kernels
