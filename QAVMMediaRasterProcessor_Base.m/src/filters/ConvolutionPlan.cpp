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
bool isPowerOfTwo(float v) {
  int exponent = 0;
  return std::fabs(std::frexp(v, &exponent)) == 0.5f;
}

float neighbour(float positive, int steps) {
  return std::bit_cast<float>(std::bit_cast<std::int32_t>(positive) + steps);
}

// The least sum whose quotient, rounded, is at least n.
float leastSumFor(float n, float divisor) {
  float sum = n * divisor;
  while (sum / divisor >= n) sum = neighbour(sum, -1);
  while (sum / divisor < n) sum = neighbour(sum, 1);
  return sum;
}

// Rounded quotients and refined products both grow with the sum, so that they truncate to the same bytes if they reach
// each whole number at the same sum.
bool truncatesAlike(const ConvolutionQuotient& q) {
  const auto refined = [&](float sum) { return std::fma(sum, q.reciprocal, sum * q.rest); };
  for (int n = 1; n <= 255; ++n) {
    const auto whole = static_cast<float>(n);
    const float least = leastSumFor(whole, q.divisor);
    if (refined(least) < whole || refined(neighbour(least, -1)) >= whole) return false;
  }
  return true;
}

ConvolutionQuotient refinedQuotient(float positive) {
  float reciprocal = 1.0f / positive;
  if (std::fma(reciprocal, positive, -1.0f) > 0.0f) reciprocal = neighbour(reciprocal, -1);
  const float rest = -std::fma(reciprocal, positive, -1.0f) / positive;
  return {ConvolutionQuotient::Refine, positive, reciprocal, rest};
}

ConvolutionQuotient quotientBy(float divisor) {
  // By 0 every quotient is infinite or not a number, and so is the product.
  if (divisor == 0.0f) return {ConvolutionQuotient::Multiply, divisor, 1.0f / divisor, 0.0f};
  const float size = std::fabs(divisor);
  if (size < 0x1p-100f || size > 0x1p100f) return {ConvolutionQuotient::Divide, divisor, 0.0f, 0.0f};
  if (isPowerOfTwo(divisor)) return {ConvolutionQuotient::Multiply, divisor, 1.0f / divisor, 0.0f};
  const ConvolutionQuotient q = refinedQuotient(size);
  if (!(q.rest > 0.0f) || !truncatesAlike(q)) return {ConvolutionQuotient::Divide, divisor, 0.0f, 0.0f};
  return {q.way, divisor, std::copysign(q.reciprocal, divisor), std::copysign(q.rest, divisor)};
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
  plan.quotient = quotientBy(pairs ? std::ldexp(sum, -whole.exponent) : sum);

  const int tapsPerLane = plan.arithmetic->tapsPerLane;
  const std::int64_t taps = 2 * reachX + 1;
  plan.weightStride = static_cast<std::size_t>((taps + tapsPerLane - 1) / tapsPerLane);
  for (std::int64_t dy = -reachY; dy <= reachY; ++dy)
    for (std::int64_t t = 0; t < taps; t += tapsPerLane)
      plan.weights.push_back(lane(kernel.at(dy, t - reachX), taps - t, tapsPerLane, whole.exponent));
  return plan;
}

}  // namespace qav
