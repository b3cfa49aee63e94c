#include "filters/BoundedConvolution.h"

#include "formats/Saturate.h"

#include <algorithm>
#include <cmath>

namespace qav {
namespace {

using kernels::ConvolutionBound;
using kernels::ConvolutionKernels;

// More bits than this are no use: single precision is in doubt by as much.
constexpr int kMostShift = 22;
// Of the results of a picture full of detail at most this part is in doubt. With more, single precision is quicker.
constexpr double kMostDoubt = 1.0 / 160;

// The weights as parts of the sum of all, which a double divides as good as exactly.
struct Shares {
  std::vector<double> parts;
  double largest = 0;  // of their magnitudes
  double sum = 0;      // of their magnitudes
  double sums = 0;     // of the sums of magnitudes up to each weight
  bool positive = true;
};

Shares sharesOf(const ConvolutionKernel& kernel, double divisor) {
  Shares shares;
  for (const float weight : kernel) {
    const double part = weight / divisor;
    shares.parts.push_back(part);
    shares.largest = std::max(shares.largest, std::fabs(part));
    shares.sum += std::fabs(part);
    shares.sums += shares.sum;
    shares.positive = shares.positive && part >= 0;
  }
  return shares;
}

// The bits behind the point with which weights fit their digits and sums 32 bits.
int shiftFor(const Shares& shares) {
  int shift = kMostShift;
  while (shift > 0 && (std::ldexp(shares.largest, shift) > ConvolutionKernels::kMostWord ||
                       std::ldexp(shares.sum, shift) * 255 > 0x7.0p28))
    --shift;
  return shift;
}

// How far a quotient in single precision can lie from the exact one. With u = 2^-24, each product is wrong by u of its
// magnitude, each sum by u of the magnitudes that it holds, each quotient by u of itself, and no sample is above 255.
// These u are of rounded numbers, which a hundredth more makes up for in kernels of less than 100 000 taps. Products
// and quotients too small for full precision are off by less than 2^-149; sums are not.
double errorInSinglePrecision(const Shares& shares) { return 0x1p-24 * 1.01 * 255 * (shares.sums + 2 * shares.sum); }

// Rounds the weights to whole numbers and sets the bounds: what rounding takes from a weight, times a sample of 0 to
// 255, is missing from the sum of the products.
void roundWeights(const Shares& shares, BoundedConvolution& made) {
  double below = std::ldexp(errorInSinglePrecision(shares), made.bound.shift) + 1, above = below;
  bool counted = true;
  for (const double part : shares.parts) {
    const double exact = std::ldexp(part, made.bound.shift), multiple = std::nearbyint(exact);
    (multiple > exact ? below : above) += std::fabs(multiple - exact) * 255;
    made.multiples.push_back(static_cast<std::int32_t>(multiple));
    counted = counted && (part == 0 || multiple != 0);
  }
  made.start = -static_cast<std::int32_t>(std::ceil(below));
  made.bound.width = static_cast<std::int32_t>(std::ceil(below) + std::ceil(above));
  // With every weight in the sum and none negative, only samples of 255 make the largest one, and the quotients in
  // single precision, whose every step grows with the samples, are not above that of these.
  made.bound.most = shares.positive && counted ? made.flat[255] : 255;
  made.bound.full = INT32_MIN;
  if (!shares.positive || !counted || made.bound.most < 255) return;
  made.bound.full = made.start;
  for (const std::int32_t multiple : made.multiples) made.bound.full += 255 * multiple;
}

// The quotient of each value under the whole kernel.
std::array<std::uint8_t, 256> flatResults(const ConvolutionKernel& kernel, float divisor) {
  std::array<float, 256> sums{};
  for (const float weight : kernel)
    for (std::size_t v = 0; v < 256; ++v) sums[v] += weight * static_cast<float>(v);
  std::array<std::uint8_t, 256> results{};
  for (std::size_t v = 0; v < 256; ++v) results[v] = byteFrom(sums[v] / divisor);
  return results;
}

}  // namespace

std::unique_ptr<BoundedConvolution> boundConvolution(const ConvolutionKernel& kernel, float sum) {
  const double size = std::fabs(sum);
  if (!(size > 0x1p-90 && size < 0x1p90) || kernel.end() - kernel.begin() > 10000) return nullptr;
  const Shares shares = sharesOf(kernel, sum);
  if (shares.sum > 100 || errorInSinglePrecision(shares) > kMostDoubt) return nullptr;
  auto made = std::make_unique<BoundedConvolution>();
  made->weights.assign(kernel.begin(), kernel.end());
  made->flat = flatResults(kernel, sum);
  made->bound.shift = shiftFor(shares);
  roundWeights(shares, *made);
  if (made->bound.width > std::ldexp(kMostDoubt, made->bound.shift)) return nullptr;
  made->bound.weights = made->weights.data();
  made->bound.taps = 2 * kernel.half() + 1;
  made->bound.flat = made->flat.data();
  made->bound.recomputed = &made->recomputed;
  return made;
}

}  // namespace qav
