#include "filters/ConvolutionPlan.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace qav {
namespace {

using kernels::ConvolutionQuotient;

// The kernel's weights are whole multiples of one power of two.
struct WholeWeights {
  int exponent = 0;    ///< weight = multiple * 2^exponent
  double largest = 0;  ///< of the multiples' magnitudes
  double sum = 0;      ///< of the multiples' magnitudes
};

int lowestBit(float weight) {
  int exponent = 0;
  const float mantissa = std::frexp(weight, &exponent);
  const auto digits = static_cast<std::uint32_t>(std::ldexp(std::fabs(mantissa), 24));
  return exponent - 24 + std::countr_zero(digits);
}

WholeWeights wholeWeights(const ConvolutionKernel& kernel) {
  WholeWeights whole;
  whole.exponent = 127;
  for (const float weight : kernel)
    if (weight != 0.0f) whole.exponent = std::min(whole.exponent, lowestBit(weight));
  for (const float weight : kernel) {
    const double multiple = std::ldexp(std::fabs(static_cast<double>(weight)), -whole.exponent);
    whole.largest = std::max(whole.largest, multiple);
    whole.sum += multiple;
  }
  return whole;
}

// Up to this bound single precision holds every sum of whole numbers, in whatever order they are added.
constexpr double kExactSums = 16777216.0;
// Sums of weights up to this keep (sum + 1/2) / divisor farther from a whole number than the rounding of 1 / divisor
// and of the product can move it.
constexpr double kExactReciprocals = 4096.0;

bool isPowerOfTwo(float v) {
  int exponent = 0;
  return std::fabs(std::frexp(v, &exponent)) == 0.5f;
}

// For sums in units of 2^exponent; `wholeSums` when they are whole numbers then.
ConvolutionQuotient quotientBy(float divisor, bool wholeSums) {
  const float reciprocal = 1.0f / divisor;
  // By 0 every quotient is infinite or not a number, and so is the product.
  if (divisor == 0.0f) return {ConvolutionQuotient::Multiply, divisor, reciprocal, 0.0f};
  const float size = std::fabs(divisor);
  if (size < 0x1p-100f || size > 0x1p100f) return {ConvolutionQuotient::Divide, divisor, 0.0f, 0.0f};
  if (isPowerOfTwo(divisor)) return {ConvolutionQuotient::Multiply, divisor, reciprocal, 0.0f};
  if (wholeSums && size <= kExactReciprocals)
    return {ConvolutionQuotient::Multiply, divisor, reciprocal, std::copysign(0.5f, divisor)};
  return {ConvolutionQuotient::Check, divisor, reciprocal, 0.0f};
}

std::uint32_t lane(const float* weights, std::int64_t count, int tapsPerLane, int exponent) {
  if (tapsPerLane == 1) return std::bit_cast<std::uint32_t>(weights[0]);
  const int bits = 32 / tapsPerLane;
  std::uint32_t packed = 0;
  for (int k = 0; k < tapsPerLane && k < count; ++k) {
    const auto multiple = static_cast<std::int32_t>(std::ldexp(weights[k], -exponent));
    packed |= (static_cast<std::uint32_t>(multiple) & ((1u << bits) - 1u)) << (k * bits);
  }
  return packed;
}

}  // namespace

ConvolutionPlan planConvolution(const ConvolutionKernel& kernel, float sum, std::int64_t reachX, std::int64_t reachY) {
  const auto& ways = kernels::convolutionKernels();
  const WholeWeights whole = wholeWeights(kernel);
  const bool exact = 255 * whole.sum < kExactSums && std::abs(whole.exponent) <= 100;
  const bool pairs = exact && whole.largest <= 32767;
  const bool quads = exact && whole.largest <= 127 && ways.quads.tapsPerLane > 0;
  ConvolutionPlan plan{quads ? &ways.quads : pairs ? &ways.pairs : &ways.floats, {}, {}, 0};
  plan.quotient = quotientBy(pairs ? std::ldexp(sum, -whole.exponent) : sum, pairs);

  const int tapsPerLane = plan.arithmetic->tapsPerLane;
  const std::int64_t taps = 2 * reachX + 1;
  plan.weightStride = static_cast<std::size_t>((taps + tapsPerLane - 1) / tapsPerLane);
  for (std::int64_t dy = -reachY; dy <= reachY; ++dy)
    for (std::int64_t t = 0; t < taps; t += tapsPerLane)
      plan.weights.push_back(lane(kernel.at(dy, t - reachX), taps - t, tapsPerLane, whole.exponent));
  return plan;
}

}  // namespace qav
