#include "kernels/MaskAlpha.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

// White is not exactly 255 when its weights are summed so, and callers see the difference: neither the order of the
// operations nor their precision may change.
constexpr double kRed = 0.2125, kGreen = 0.7154, kBlue = 0.0721;

#if QAV_KERNEL_LEVEL >= 1
template <int half>
[[gnu::always_inline]] inline F64 toDouble(I32 v) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_cvtepi32_pd(_mm512_extracti64x4_epi64((__m512i)v, half));
#else
  return (F64)_mm256_cvtepi32_pd(_mm256_extracti128_si256((__m256i)v, half));
#endif
}

[[gnu::always_inline]] inline I32 truncated(F64 low, F64 high) {
#if QAV_KERNEL_LEVEL >= 2
  const __m512i first = _mm512_castsi256_si512(_mm512_cvttpd_epi32((__m512d)low));
  return (I32)_mm512_inserti64x4(first, _mm512_cvttpd_epi32((__m512d)high), 1);
#else
  return (I32)_mm256_set_m128i(_mm256_cvttpd_epi32((__m256d)high), _mm256_cvttpd_epi32((__m256d)low));
#endif
}

[[gnu::always_inline]] inline F64 multiplyAdd(F64 a, F64 b, F64 c) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_fmadd_pd((__m512d)a, (__m512d)b, (__m512d)c);
#else
  return (F64)_mm256_fmadd_pd((__m256d)a, (__m256d)b, (__m256d)c);
#endif
}

[[gnu::always_inline]] inline F64 atMostOne(F64 v) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_min_pd((__m512d)v, _mm512_set1_pd(1.0));
#else
  return (F64)_mm256_min_pd((__m256d)v, _mm256_set1_pd(1.0));
#endif
}

// v / 255, correctly rounded: with the rounded reciprocal, one exact remainder repairs the quotient (Markstein 1990).
[[gnu::always_inline]] inline F64 over255(F64 v) {
  const F64 reciprocal = splat<F64>(1.0 / 255.0);
  const F64 quotient = v * reciprocal;
  return multiplyAdd(multiplyAdd(quotient, splat<F64>(-255.0), v), reciprocal, quotient);
}

template <int half>
[[gnu::always_inline]] inline F64 weakened(I32 alpha, I32 mask) {
  const F64 luminance = (kRed * toDouble<half>(mask & 255) + kGreen * toDouble<half>(mask >> 8 & 255)) +
                        kBlue * toDouble<half>(mask >> 16 & 255);
  const F64 factor = over255(toDouble<half>((I32)((U32)mask >> 24))) * over255(luminance);
  return toDouble<half>(alpha) * atMostOne(factor);
}
#endif

std::uint8_t weakened(const std::uint8_t* mask, std::uint8_t alpha) {
  const double luminance = (kRed * mask[0] + kGreen * mask[1]) + kBlue * mask[2];
  const double factor = (mask[3] / 255.0) * (luminance / 255.0);
  return static_cast<std::uint8_t>(alpha * (factor > 1.0 ? 1.0 : factor));
}

void byLuminance(const std::uint8_t* source, const std::uint8_t* mask, std::size_t pixels, std::uint8_t* result) {
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 1
  for (; i + kLanes<I32> <= pixels; i += kLanes<I32>) {
    const I32 colour = load<I32>(source + 4 * i), m = load<I32>(mask + 4 * i);
    const I32 alpha = (I32)((U32)colour >> 24);
    store(result + 4 * i, (colour & 0xFFFFFF) | truncated(weakened<0>(alpha, m), weakened<1>(alpha, m)) << 24);
  }
#endif
  for (; i < pixels; ++i) {
    std::memcpy(result + 4 * i, source + 4 * i, 3);
    result[4 * i + 3] = weakened(mask + 4 * i, source[4 * i + 3]);
  }
}

void byAlpha(const std::uint8_t* source, const std::uint8_t* mask, std::size_t pixels, std::uint8_t* result) {
  std::size_t i = 0;
  for (; i + kLanes<U32> <= pixels; i += kLanes<U32>) {
    const U32 removed = (U32)((load<U32>(mask + 4 * i) >> 24) == 0u) << 24;
    store(result + 4 * i, load<U32>(source + 4 * i) & ~removed);
  }
  for (; i < pixels; ++i) {
    std::memcpy(result + 4 * i, source + 4 * i, 4);
    if (mask[4 * i + 3] == 0) result[4 * i + 3] = 0;
  }
}

}  // namespace

extern const MaskAlphaKernels maskAlpha;
const MaskAlphaKernels maskAlpha = {&byLuminance, &byAlpha};

#include "RegionEnd.h"
