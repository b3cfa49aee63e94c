#include "filters/ConvolutionPlan.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

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
  return {ConvolutionQuotient::Refine, positive, reciprocal, rest, 0, 0};
}

ConvolutionQuotient quotientBy(float divisor) {
  // By 0 every quotient is infinite or not a number, and so is the product.
  if (divisor == 0.0f) return {ConvolutionQuotient::Multiply, divisor, 1.0f / divisor, 0.0f, 0, 0};
  const float size = std::fabs(divisor);
  if (size < 0x1p-100f || size > 0x1p100f) return {ConvolutionQuotient::Divide, divisor, 0.0f, 0.0f, 0, 0};
  if (isPowerOfTwo(divisor)) return {ConvolutionQuotient::Multiply, divisor, 1.0f / divisor, 0.0f, 0, 0};
  const ConvolutionQuotient q = refinedQuotient(size);
  if (!(q.rest > 0.0f) || !truncatesAlike(q)) return {ConvolutionQuotient::Divide, divisor, 0.0f, 0.0f, 0, 0};
  return {q.way, divisor, std::copysign(q.reciprocal, divisor), std::copysign(q.rest, divisor), 0, 0};
}

ConvolutionQuotient wordQuotient(std::uint32_t divisor, std::uint32_t shift) {
  const std::uint32_t factor = ((65536u << shift) + divisor - 1) / divisor;
  return {ConvolutionQuotient::Words,       0.0f, 0.0f, 0.0f, static_cast<std::uint16_t>(factor),
          static_cast<std::uint16_t>(shift)};
}

// True if the results reach each of 1..255 at the same sum as the quotients.
bool truncatesAlike(const ConvolutionQuotient& q, std::uint32_t divisor) {
  const auto result = [&](std::uint32_t sum) { return sum * q.factor >> 16 >> q.shift; };
  for (std::uint32_t n = 1; n <= 255; ++n)
    if (result(n * divisor) < n || result(n * divisor - 1) >= n) return false;
  return true;
}

// By a whole divisor, for whole sums, if it can be done in 16 bits. Sums of 65536 and more give at least 255 like
// 65535, if 257 is the largest divisor. The quotient in single precision truncates like the exact one: that is further
// below a whole number, if at all, than it is rounded by. By 1 the product would not fit.
std::optional<ConvolutionQuotient> wordQuotientBy(double divisor) {
  if (divisor < 2 || divisor > 257) return std::nullopt;
  const auto whole = static_cast<std::uint32_t>(divisor);
  for (std::uint32_t shift = 0; 65536u << shift <= 65535u * whole; ++shift)
    if (const auto q = wordQuotient(whole, shift); truncatesAlike(q, whole)) return q;
  return std::nullopt;
}

// Lanes of weights that are whole numbers, row by row, from the weight of the first tap within reach on.
class LanePacker {
 public:
  LanePacker(const kernels::ConvolutionArithmetic& arithmetic, std::vector<std::uint32_t>& lanes)
      : taps_(arithmetic.tapsPerLane), digits_(arithmetic.digits), lanes_(lanes) {}

  template <class WeightAt>
  void packRow(std::int64_t count, const WeightAt& weightAt) {
    for (std::int64_t t = 0; t < count; t += taps_)
      for (int digit = 0; digit < digits_; ++digit) {
        std::uint32_t lane = 0;
        for (int k = 0; k < taps_ && t + k < count; ++k) lane |= part(weightAt(t + k), digit) << (k * 32 / taps_);
        lanes_.push_back(lane);
      }
  }

 private:
  // The lower of two digits is signed too.
  std::uint32_t part(std::int32_t weight, int digit) const {
    const std::int32_t value = digit == 0 ? weight : (weight + 128) >> 8;
    return static_cast<std::uint32_t>(value) & (taps_ == 2 ? 0xFFFFu : 0xFFu);
  }

  int taps_;
  int digits_;
  std::vector<std::uint32_t>& lanes_;
};

ConvolutionPlan planFloats(const ConvolutionKernel& kernel, float sum, std::int64_t reachX, std::int64_t reachY) {
  const auto taps = static_cast<std::size_t>(2 * reachX + 1);
  ConvolutionPlan plan{&kernels::convolutionKernels().floats, quotientBy(sum), {}, taps, nullptr};
  for (std::int64_t dy = -reachY; dy <= reachY; ++dy)
    for (const float* w = kernel.at(dy, -reachX); w <= kernel.at(dy, reachX); ++w)
      plan.weights.push_back(std::bit_cast<std::uint32_t>(*w));
  return plan;
}

std::size_t lanesOf(const kernels::ConvolutionArithmetic& arithmetic, std::int64_t taps) {
  return static_cast<std::size_t>((taps + arithmetic.tapsPerLane - 1) / arithmetic.tapsPerLane);
}

ConvolutionPlan planBounded(std::unique_ptr<BoundedConvolution> bounded, const ConvolutionKernel& kernel, float sum) {
  const auto& words = kernels::convolutionKernels().words;
  const std::int64_t taps = 2 * kernel.half() + 1;
  ConvolutionPlan plan{
      &words, {ConvolutionQuotient::Divide, sum, 0, 0, 0, 0}, {}, lanesOf(words, taps), std::move(bounded)};
  LanePacker packer(words, plan.weights);
  for (auto row = plan.bounded->multiples.begin(); row != plan.bounded->multiples.end(); row += taps)
    packer.packRow(taps, [row](std::int64_t t) { return row[t]; });
  return plan;
}

}  // namespace

ConvolutionPlan planConvolution(const ConvolutionKernel& kernel, float sum, std::int64_t reachX, std::int64_t reachY,
                                Bounding bounding) {
  const auto& ways = kernels::convolutionKernels();
  const WholeWeights whole = wholeWeights(kernel);
  const bool exact = 255 * whole.sum < kExactSums && std::abs(whole.exponent) <= 100;
  if (!exact || whole.largest > kernels::ConvolutionKernels::kMostWord) {
    const int least = ways.words.boundedFrom;
    const bool covered = reachX == kernel.half() && reachY == kernel.half();
    const bool bounds = bounding == Bounding::Yes && least > 0 && 2 * kernel.half() + 1 >= least && covered;
    auto bounded = bounds ? boundConvolution(kernel, sum) : nullptr;
    return bounded ? planBounded(std::move(bounded), kernel, sum) : planFloats(kernel, sum, reachX, reachY);
  }
  const bool bytes = whole.largest <= kernels::ConvolutionKernels::kMostByte && ways.bytes.tapsPerLane > 0;
  double scale = std::ldexp(1.0, -whole.exponent);
  ConvolutionPlan plan{bytes ? &ways.bytes : &ways.words, quotientBy(static_cast<float>(sum * scale)), {}, 0, nullptr};
  if (bytes) {
    // The same quotients come from weights of the other sign, or twice as large.
    const double wordScale = std::copysign(std::fabs(sum * scale) == 1 && whole.largest <= 63 ? 2 * scale : scale, sum);
    if (const auto quotient = wordQuotientBy(sum * wordScale)) {
      plan.quotient = *quotient;
      scale = wordScale;
    }
  }
  const std::int64_t taps = 2 * reachX + 1;
  plan.weightStride = lanesOf(*plan.arithmetic, taps);
  LanePacker packer(*plan.arithmetic, plan.weights);
  for (std::int64_t dy = -reachY; dy <= reachY; ++dy)
    packer.packRow(taps, [&](std::int64_t t) { return static_cast<std::int32_t>(*kernel.at(dy, t - reachX) * scale); });
  return plan;
}

}  // namespace qav
