// Weighted sums of floats in double, several side by side. Included inside the region, behind Vector.h.

namespace {

constexpr std::size_t kDoubles = kLanes<F64>;
// Results whose sources overlap are summed side by side: a source sample that was read and widened to double once
// serves them all. As many as the registers hold, four vectors of each.
constexpr std::size_t kTogether = QAV_KERNEL_LEVEL >= 2 ? 4 : 2;
constexpr std::size_t kVectors = QAV_KERNEL_LEVEL >= 1 ? 4 : 2;

template <std::size_t kOutputs, std::size_t kCount>
using Sums = F64[kOutputs][kCount];

[[gnu::always_inline]] inline F64 timesPlus(F64 a, F64 b, F64 c) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_fmadd_pd((__m512d)a, (__m512d)b, (__m512d)c);
#elif QAV_KERNEL_LEVEL == 1
  return (F64)_mm256_fmadd_pd((__m256d)a, (__m256d)b, (__m256d)c);
#else
  return a * b + c;
#endif
}

// A source position for the results kFrom to kTo - 1; source.read(v) is vector v of it. kExact: all products are exact,
// so that rounding once what is added to them gives the same.
template <bool kExact, std::size_t kFrom, std::size_t kTo, std::size_t kOutputs, std::size_t kCount, class Source>
[[gnu::always_inline]] inline void addPosition(const F64* weights, const Source& source, Sums<kOutputs, kCount>& sums) {
#pragma GCC unroll 4
  for (std::size_t v = 0; v < kCount; ++v) {
    const F64 samples = source.read(v);
#pragma GCC unroll 8
    for (std::size_t o = kFrom; o < kTo; ++o) {
      if constexpr (kExact)
        sums[o][v] = timesPlus(samples, weights[o], sums[o][v]);
      else
        sums[o][v] += samples * weights[o];
    }
  }
}

// The next `count` source positions for the results kFrom to kTo - 1. weights[o] is the next weight of result o;
// source.next() goes on to the position behind.
template <bool kExact, std::size_t kFrom, std::size_t kTo, std::size_t kOutputs, std::size_t kCount, class Source>
[[gnu::always_inline]] inline void addSpan(std::int32_t count, const double* (&weights)[kOutputs], Source& source,
                                           Sums<kOutputs, kCount>& sums) {
  for (; count > 0; --count, source.next()) {
    F64 weight[kTo];
#pragma GCC unroll 4
    for (std::size_t o = kFrom; o < kTo; ++o) weight[o] = splat<F64>(*weights[o]++);
    addPosition<kExact, kFrom, kTo>(weight, source, sums);
  }
}

// Results that overlap in order: they begin one after the other, all take part for a while, and are done one after the
// other.
template <bool kExact, std::size_t kOutputs, std::size_t kCount, class Source>
[[gnu::always_inline]] inline void addAll(const FloatTaps* taps, Source source, Sums<kOutputs, kCount>& sums) {
  static_assert(kOutputs == 1 || kOutputs == 2 || kOutputs == 4);
  const double* weights[kOutputs];
#pragma GCC unroll 4
  for (std::size_t o = 0; o < kOutputs; ++o) weights[o] = taps[o].weights;
  if constexpr (kOutputs > 1) addSpan<kExact, 0, 1>(taps[1].left - taps[0].left, weights, source, sums);
  if constexpr (kOutputs > 2) addSpan<kExact, 0, 2>(taps[2].left - taps[1].left, weights, source, sums);
  if constexpr (kOutputs > 3) addSpan<kExact, 0, 3>(taps[3].left - taps[2].left, weights, source, sums);
  addSpan<kExact, 0, kOutputs>(taps[0].behind() - taps[kOutputs - 1].left, weights, source, sums);
  if constexpr (kOutputs > 1) addSpan<kExact, 1, kOutputs>(taps[1].behind() - taps[0].behind(), weights, source, sums);
  if constexpr (kOutputs > 2) addSpan<kExact, 2, kOutputs>(taps[2].behind() - taps[1].behind(), weights, source, sums);
  if constexpr (kOutputs > 3) addSpan<kExact, 3, kOutputs>(taps[3].behind() - taps[2].behind(), weights, source, sums);
}

[[gnu::always_inline]] inline F64 doublesFromFloats(const float* from) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_cvtps_pd(_mm256_loadu_ps(from));
#elif QAV_KERNEL_LEVEL == 1
  return (F64)_mm256_cvtps_pd(_mm_loadu_ps(from));
#else
  return F64{static_cast<double>(from[0]), static_cast<double>(from[1])};
#endif
}

[[gnu::always_inline]] inline void storeAsFloats(float* to, F64 v) {
#if QAV_KERNEL_LEVEL >= 2
  _mm256_storeu_ps(to, _mm512_cvtpd_ps((__m512d)v));
#elif QAV_KERNEL_LEVEL == 1
  _mm_storeu_ps(to, _mm256_cvtpd_ps((__m256d)v));
#else
  for (std::size_t i = 0; i < kDoubles; ++i) to[i] = static_cast<float>(v[i]);
#endif
}

}  // namespace
