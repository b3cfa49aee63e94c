#include "kernels/FloatResampling.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

constexpr std::size_t kDoubles = kLanes<F64>;

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

template <std::size_t kVectors>
void columnBlock(const float* const* rows, std::size_t at, const FloatTaps& taps, float* out) {
  F64 sums[kVectors] = {};
  for (std::int32_t t = 0; t < taps.count; ++t) {
    const F64 weight = splat<F64>(taps.weights[t]);
    const float* const row = rows[t] + at;
#pragma GCC unroll 8
    for (std::size_t v = 0; v < kVectors; ++v) sums[v] += doublesFromFloats(row + v * kDoubles) * weight;
  }
#pragma GCC unroll 8
  for (std::size_t v = 0; v < kVectors; ++v) storeAsFloats(out + at + v * kDoubles, sums[v]);
}

void columns(const float* const* rows, std::size_t first, std::size_t end, const FloatTaps& taps, float* out) {
  std::size_t at = first;
  for (; at + 8 * kDoubles <= end; at += 8 * kDoubles) columnBlock<8>(rows, at, taps, out);
  for (; at + kDoubles <= end; at += kDoubles) columnBlock<1>(rows, at, taps, out);
  for (; at < end; ++at) {
    double sum = 0.0;
    for (std::int32_t t = 0; t < taps.count; ++t) sum += static_cast<double>(rows[t][at]) * taps.weights[t];
    out[at] = static_cast<float>(sum);
  }
}

#if QAV_KERNEL_LEVEL >= 1

// A pixel of each row in four lanes; several vectors of such pixels at a time, which share their weights. Source pixels
// are first turned into doubles, for as many results as look at a span that a third of the first-level cache holds.
constexpr std::size_t kRowsOfVector = kDoubles / 4;
constexpr std::size_t kVectors = 4;
constexpr std::size_t kRows = kVectors * kRowsOfVector;
constexpr std::size_t kPixelDoubles = kVectors * kDoubles;
constexpr RowStretchShape kShape = {1, 1, 2048 / kPixelDoubles, kPixelDoubles};

template <int kChannels>
[[gnu::always_inline]] inline __m128 loadPixel(const float* from) {
  if constexpr (kChannels == 4) return _mm_loadu_ps(from);
  return _mm_maskload_ps(from, _mm_setr_epi32(-1, -1, -1, 0));
}

template <int kChannels>
[[gnu::always_inline]] inline void storePixel(float* to, __m128 pixel) {
  if constexpr (kChannels == 4)
    _mm_storeu_ps(to, pixel);
  else
    _mm_maskstore_ps(to, _mm_setr_epi32(-1, -1, -1, 0), pixel);
}

template <int kChannels>
[[gnu::always_inline]] inline F64 loadPixels(const float* const* rows, std::size_t at) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_cvtps_pd(_mm256_insertf128_ps(_mm256_castps128_ps256(loadPixel<kChannels>(rows[0] + at)),
                                                   loadPixel<kChannels>(rows[1] + at), 1));
#else
  return (F64)_mm256_cvtps_pd(loadPixel<kChannels>(rows[0] + at));
#endif
}

template <int kChannels>
[[gnu::always_inline]] inline void storePixels(float* const* rows, std::size_t rowCount, std::size_t at, F64 pixels) {
#if QAV_KERNEL_LEVEL >= 2
  const __m256 both = _mm512_cvtpd_ps((__m512d)pixels);
  if (rowCount > 0) storePixel<kChannels>(rows[0] + at, _mm256_castps256_ps128(both));
  if (rowCount > 1) storePixel<kChannels>(rows[1] + at, _mm256_extractf128_ps(both, 1));
#else
  if (rowCount > 0) storePixel<kChannels>(rows[0] + at, _mm256_cvtpd_ps((__m256d)pixels));
#endif
}

// Meanwhile the same pixels of the rows `ahead` samples further on are called into the cache.
template <int kChannels>
void widenPixels(const float* const* rows, const RowStretch& stretch, std::size_t ahead, double* pixels) {
  for (std::size_t x = stretch.source; x < stretch.source + stretch.length; ++x, pixels += kPixelDoubles) {
    // Four pixels are at most a cache line.
    for (std::size_t r = x % 4; r < kRows; r += 4)
      _mm_prefetch(reinterpret_cast<const char*>(rows[r] + x * kChannels + ahead), _MM_HINT_T1);
#pragma GCC unroll 4
    for (std::size_t v = 0; v < kVectors; ++v)
      store(pixels + v * kDoubles, loadPixels<kChannels>(rows + v * kRowsOfVector, x * kChannels));
  }
}

template <int kChannels>
[[gnu::always_inline]] inline void sumPixels(const double* pixel, const FloatTaps& taps, std::size_t at,
                                             std::size_t rowCount, float* const* out) {
  F64 sums[kVectors] = {};
  for (std::int32_t t = 0; t < taps.count; ++t, pixel += kPixelDoubles) {
    const F64 weight = splat<F64>(taps.weights[t]);
#pragma GCC unroll 4
    for (std::size_t v = 0; v < kVectors; ++v) sums[v] += load<F64>(pixel + v * kDoubles) * weight;
  }
#pragma GCC unroll 4
  for (std::size_t v = 0; v < kVectors; ++v)
    if (rowCount > v * kRowsOfVector)
      storePixels<kChannels>(out + v * kRowsOfVector, rowCount - v * kRowsOfVector, at * kChannels, sums[v]);
}

template <int kChannels>
void rowsOf(const FloatRows& in, const FloatTaps* taps, const RowStretch* stretches, std::size_t stretchCount,
            float* const* out, double* scratch) {
  const float* sources[kRows];
  for (std::size_t r = 0; r < kRows; ++r) sources[r] = in.rows[r < in.count ? r : 0];
  for (std::size_t s = 0; s < stretchCount; ++s) {
    const RowStretch& stretch = stretches[s];
    widenPixels<kChannels>(sources, stretch, in.ahead, scratch);
    for (std::size_t x = stretch.first; x < stretch.end; ++x) {
      const std::size_t first = taps[x].count > 0 ? static_cast<std::size_t>(taps[x].left) - stretch.source : 0;
      sumPixels<kChannels>(scratch + first * kPixelDoubles, taps[x], x, in.count, out);
    }
  }
}

#else

constexpr std::size_t kRows = 1;
constexpr RowStretchShape kShape = {1, 1, 1, 0};

template <int kChannels>
void rowsOf(const FloatRows& in, const FloatTaps* taps, const RowStretch* stretches, std::size_t stretchCount,
            float* const* out, double*) {
  for (std::size_t x = 0; x < stretches[stretchCount - 1].end; ++x) {
    double sums[kChannels] = {};
    const float* from = in.rows[0] + static_cast<std::size_t>(taps[x].left) * kChannels;
    for (std::int32_t t = 0; t < taps[x].count; ++t, from += kChannels)
      for (int c = 0; c < kChannels; ++c) sums[c] += static_cast<double>(from[c]) * taps[x].weights[t];
    for (int c = 0; c < kChannels; ++c)
      out[0][x * kChannels + static_cast<std::size_t>(c)] = static_cast<float>(sums[c]);
  }
}

#endif

void rows(const FloatRows& in, const FloatTaps* taps, const RowStretch* stretches, std::size_t stretchCount,
          float* const* out, double* scratch) {
  if (in.channels == 4)
    rowsOf<4>(in, taps, stretches, stretchCount, out, scratch);
  else
    rowsOf<3>(in, taps, stretches, stretchCount, out, scratch);
}

}  // namespace

extern const FloatResamplingKernels floatResampling;
const FloatResamplingKernels floatResampling = {kRows, kShape, &rows, &columns};

#include "RegionEnd.h"
