#include "kernels/FloatResampling.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

#include "Fetching.h"

namespace {

constexpr std::size_t kDoubles = kLanes<F64>;
// Results whose sources overlap are summed side by side: a source sample that was read and widened to double once
// serves them all. As many as the registers hold, four vectors of each.
constexpr std::size_t kTogether = QAV_KERNEL_LEVEL >= 2 ? 4 : 2;
constexpr std::size_t kVectors = QAV_KERNEL_LEVEL >= 1 ? 4 : 2;

template <std::size_t kOutputs, std::size_t kCount>
using Sums = F64[kOutputs][kCount];

// The next `count` source positions for the results kFrom to kTo - 1. weights[o] is the next weight of result o;
// source.read(v) is vector v of the position, and source.next() goes on to the one behind it.
template <std::size_t kFrom, std::size_t kTo, std::size_t kOutputs, std::size_t kCount, class Source>
[[gnu::always_inline]] inline void addSpan(std::int32_t count, const double* (&weights)[kOutputs], Source& source,
                                           Sums<kOutputs, kCount>& sums) {
  for (; count > 0; --count, source.next()) {
    F64 weight[kTo];
#pragma GCC unroll 4
    for (std::size_t o = kFrom; o < kTo; ++o) weight[o] = splat<F64>(*weights[o]++);
#pragma GCC unroll 4
    for (std::size_t v = 0; v < kCount; ++v) {
      const F64 samples = source.read(v);
#pragma GCC unroll 4
      for (std::size_t o = kFrom; o < kTo; ++o) sums[o][v] += samples * weight[o];
    }
  }
}

// Results that overlap in order: they begin one after the other, all take part for a while, and are done one after the
// other.
template <std::size_t kOutputs, std::size_t kCount, class Source>
[[gnu::always_inline]] inline void addAll(const FloatTaps* taps, Source source, Sums<kOutputs, kCount>& sums) {
  static_assert(kOutputs == 1 || kOutputs == 2 || kOutputs == 4);
  const double* weights[kOutputs];
#pragma GCC unroll 4
  for (std::size_t o = 0; o < kOutputs; ++o) weights[o] = taps[o].weights;
  if constexpr (kOutputs > 1) addSpan<0, 1>(taps[1].left - taps[0].left, weights, source, sums);
  if constexpr (kOutputs > 2) addSpan<0, 2>(taps[2].left - taps[1].left, weights, source, sums);
  if constexpr (kOutputs > 3) addSpan<0, 3>(taps[3].left - taps[2].left, weights, source, sums);
  addSpan<0, kOutputs>(taps[0].behind() - taps[kOutputs - 1].left, weights, source, sums);
  if constexpr (kOutputs > 1) addSpan<1, kOutputs>(taps[1].behind() - taps[0].behind(), weights, source, sums);
  if constexpr (kOutputs > 2) addSpan<2, kOutputs>(taps[2].behind() - taps[1].behind(), weights, source, sums);
  if constexpr (kOutputs > 3) addSpan<3, kOutputs>(taps[3].behind() - taps[2].behind(), weights, source, sums);
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

struct ColumnSource {
  const float* const* rows;
  std::size_t at;
  F64 read(std::size_t v) const { return doublesFromFloats(*rows + at + v * kDoubles); }
  void next() { ++rows; }
};

template <std::size_t kOutputs, std::size_t kCount>
void columnBlock(const FloatColumns& in, std::size_t at, float* const* out) {
  Sums<kOutputs, kCount> sums = {};
  addAll(in.taps, ColumnSource{in.rows, at}, sums);
#pragma GCC unroll 4
  for (std::size_t o = 0; o < kOutputs; ++o)
#pragma GCC unroll 4
    for (std::size_t v = 0; v < kCount; ++v) storeAsFloats(out[o] + at + v * kDoubles, sums[o][v]);
}

void columnSample(const FloatColumns& in, std::size_t at, float* const* out) {
  for (std::size_t o = 0; o < in.count; ++o) {
    const FloatTaps& taps = in.taps[o];
    double sum = 0.0;
    for (std::int32_t t = 0; t < taps.count; ++t)
      sum += static_cast<double>(in.rows[taps.left - in.taps[0].left + t][at]) * taps.weights[t];
    out[o][at] = static_cast<float>(sum);
  }
}

template <std::size_t kOutputs>
void columnsOf(const FloatColumns& in, std::size_t first, std::size_t end, float* const* out) {
  std::size_t at = first;
  for (; at + kVectors * kDoubles <= end; at += kVectors * kDoubles) columnBlock<kOutputs, kVectors>(in, at, out);
  for (; at + kDoubles <= end; at += kDoubles) columnBlock<kOutputs, 1>(in, at, out);
  for (; at < end; ++at) columnSample(in, at, out);
}

void columns(const FloatColumns& in, std::size_t first, std::size_t end, float* const* out) {
  if (in.count == kTogether)
    columnsOf<kTogether>(in, first, end, out);
  else
    columnsOf<1>(in, first, end, out);
}

#if QAV_KERNEL_LEVEL >= 1

// A pixel of each row in four lanes.
constexpr std::size_t kRowsOfVector = kDoubles / 4;
constexpr std::size_t kRows = kVectors * kRowsOfVector;

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
[[gnu::always_inline]] inline F64 loadPixels(const float* from, [[maybe_unused]] std::size_t stride) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_cvtps_pd(
      _mm256_insertf128_ps(_mm256_castps128_ps256(loadPixel<kChannels>(from)), loadPixel<kChannels>(from + stride), 1));
#else
  return (F64)_mm256_cvtps_pd(loadPixel<kChannels>(from));
#endif
}

template <int kChannels>
[[gnu::always_inline]] inline void storePixels(float* const* rows, std::size_t at, F64 pixels) {
#if QAV_KERNEL_LEVEL >= 2
  const __m256 both = _mm512_cvtpd_ps((__m512d)pixels);
  storePixel<kChannels>(rows[0] + at, _mm256_castps256_ps128(both));
  storePixel<kChannels>(rows[1] + at, _mm256_extractf128_ps(both, 1));
#else
  storePixel<kChannels>(rows[0] + at, _mm256_cvtpd_ps((__m256d)pixels));
#endif
}

template <int kChannels>
struct RowSource {
  const float* pixel;
  std::size_t stride;
  F64 read(std::size_t v) const { return loadPixels<kChannels>(pixel + v * kRowsOfVector * stride, stride); }
  void next() { pixel += kChannels; }
};

template <int kChannels, std::size_t kOutputs, std::size_t kCount>
void rowBlock(const float* from, std::size_t stride, const FloatTaps* taps, std::size_t x, float* const* out) {
  Sums<kOutputs, kCount> sums = {};
  addAll(taps + x, RowSource<kChannels>{from + static_cast<std::size_t>(taps[x].left) * kChannels, stride}, sums);
#pragma GCC unroll 4
  for (std::size_t v = 0; v < kCount; ++v)
#pragma GCC unroll 4
    for (std::size_t o = 0; o < kOutputs; ++o)
      storePixels<kChannels>(out + v * kRowsOfVector, (x + o) * kChannels, sums[o][v]);
}

// kCount vectors of rows, where the last row may stand for one that is not there.
template <int kChannels, std::size_t kCount>
void rowsTogether(const float* from, std::size_t stride, const FloatTaps* taps, std::size_t width, std::size_t ahead,
                  float* const* out) {
  Fetching next(from + ahead, ahead, width / kTogether + 1);
  for (std::size_t x = 0; x < width;) {
    if (x + kTogether <= width && overlapInOrder(taps + x, kTogether)) {
      rowBlock<kChannels, kTogether, kCount>(from, stride, taps, x, out);
      x += kTogether;
    } else {
      rowBlock<kChannels, 1, kCount>(from, stride, taps, x, out);
      ++x;
    }
    next.portion();
  }
}

template <int kChannels>
void rowsOf(const SourceRows<float>& in, const FloatTaps* taps, std::size_t width, float* const* out) {
  if (in.count == kRows) return rowsTogether<kChannels, kVectors>(in.first, in.stride, taps, width, in.ahead, out);
  for (std::size_t r = 0; r < in.count; r += kRowsOfVector) {
    const bool whole = in.count - r >= kRowsOfVector;
    float* const to[2] = {out[r], out[whole ? r + kRowsOfVector - 1 : r]};
    rowsTogether<kChannels, 1>(in.first + r * in.stride, whole ? in.stride : 0, taps, width, 0, to);
  }
}

#else

constexpr std::size_t kRows = 1;

template <int kChannels>
void rowsOf(const SourceRows<float>& in, const FloatTaps* taps, std::size_t width, float* const* out) {
  for (std::size_t x = 0; x < width; ++x) {
    double sums[kChannels] = {};
    const float* from = in.first + static_cast<std::size_t>(taps[x].left) * kChannels;
    for (std::int32_t t = 0; t < taps[x].count; ++t, from += kChannels)
      for (int c = 0; c < kChannels; ++c) sums[c] += static_cast<double>(from[c]) * taps[x].weights[t];
    for (int c = 0; c < kChannels; ++c)
      out[0][x * kChannels + static_cast<std::size_t>(c)] = static_cast<float>(sums[c]);
  }
}

#endif

void rows(const SourceRows<float>& in, const FloatTaps* taps, std::size_t width, float* const* out) {
  if (in.channels == 4)
    rowsOf<4>(in, taps, width, out);
  else
    rowsOf<3>(in, taps, width, out);
}

}  // namespace

extern const FloatResamplingKernels floatResampling;
const FloatResamplingKernels floatResampling = {kRows, kTogether, &rows, &columns};

#include "RegionEnd.h"
