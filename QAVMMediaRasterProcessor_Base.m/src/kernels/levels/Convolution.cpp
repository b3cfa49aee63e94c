#include "kernels/Convolution.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

void widen(const std::uint8_t* bytes, std::size_t count, float* samples) {
  std::size_t i = 0;
  for (; i + kLanes<I32> <= count; i += kLanes<I32>) store(samples + i, toFloat(loadWidened32(bytes + i)));
  for (; i < count; ++i) samples[i] = bytes[i];
}

// Vectors that are summed at the same time, to hide the latency of the additions.
inline constexpr std::size_t kBlock = 8;

struct Sums {
  F32 lanes[kBlock];
};

[[gnu::always_inline]] inline Sums sumsAt(const ConvolutionRow& row, std::size_t i) {
  Sums sums{};
  for (std::size_t r = 0; r < row.rowCount; ++r) {
    const float* at = row.rows[r] + i;
    const float* const weights = row.weights[r];
    for (std::size_t t = 0; t < row.taps; ++t, at += 4) {
      const F32 weight = splat<F32>(weights[t]);
#pragma GCC unroll 8
      for (std::size_t b = 0; b < kBlock; ++b) sums.lanes[b] += weight * load<F32>(at + b * kLanes<F32>);
    }
  }
  return sums;
}

[[gnu::always_inline]] inline void writeQuotients(const Sums& sums, F32 divisor, std::uint8_t* out) {
#pragma GCC unroll 8
  for (std::size_t b = 0; b < kBlock; ++b) {
    // In this order of arguments not-a-number becomes 0.
    const F32 v = min(max(sums.lanes[b] / divisor, F32{}), splat<F32>(255.0f));
    storeNarrowed(out + b * kLanes<F32>, truncate(v));
  }
}

void convolve(const ConvolutionRow& row) {
  constexpr std::size_t step = kBlock * kLanes<F32>;
  static_assert(step <= kConvolutionSlack);
  const F32 divisor = splat<F32>(row.weightSum);
  std::size_t i = 0;
  for (; i + step <= row.count; i += step) writeQuotients(sumsAt(row, i), divisor, row.out + i);
  if (i == row.count) return;
  std::uint8_t rest[step];
  writeQuotients(sumsAt(row, i), divisor, rest);
  std::memcpy(row.out + i, rest, row.count - i);
}

}  // namespace

extern const ConvolutionKernels convolution;
const ConvolutionKernels convolution = {&widen, &convolve};

#include "RegionEnd.h"
