#include "kernels/FloatResampling.h"

#include <type_traits>
#include <utility>

#include "RegionBegin.h"

#include "Vector.h"

#include "Fetching.h"

#include "FloatSums.h"

#if QAV_KERNEL_LEVEL >= 1
#include "FloatRuns.h"
#endif

namespace {

struct ColumnSource {
  const float* const* rows;
  std::size_t at;
  F64 read(std::size_t v) const { return doublesFromFloats(*rows + at + v * kDoubles); }
  void next() { ++rows; }
};

template <bool kExact, std::size_t kOutputs, std::size_t kCount>
void columnBlock(const FloatColumns& in, std::size_t at, float* const* out) {
  Sums<kOutputs, kCount> sums = {};
  addAll<kExact>(in.taps, ColumnSource{in.rows, at}, sums);
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

template <bool kExact, std::size_t kOutputs>
void columnsOf(const FloatColumns& in, std::size_t first, std::size_t end, float* const* out) {
  std::size_t at = first;
  for (; at + kVectors * kDoubles <= end; at += kVectors * kDoubles)
    columnBlock<kExact, kOutputs, kVectors>(in, at, out);
  for (; at + kDoubles <= end; at += kDoubles) columnBlock<kExact, kOutputs, 1>(in, at, out);
  for (; at < end; ++at) columnSample(in, at, out);
}

void columns(const FloatColumns& in, std::size_t first, std::size_t end, float* const* out) {
  if (in.count < kTogether) return columnsOf<false, 1>(in, first, end, out);
  bool exact = true;
  for (std::size_t o = 0; o < kTogether; ++o) exact = exact && in.taps[o].exact;
  if (exact)
    columnsOf<true, kTogether>(in, first, end, out);
  else
    columnsOf<false, kTogether>(in, first, end, out);
}

#if QAV_KERNEL_LEVEL >= 1

// A pixel of each row in four lanes.
constexpr std::size_t kRowsOfVector = kDoubles / 4;
constexpr std::size_t kRows = kVectors * kRowsOfVector;

// How pixels of three samples are read and written: alone, or with whatever is behind them. What is written behind a
// pixel has to be written again.
enum class Pixel { Alone, Joined };

template <int kChannels, Pixel kPixel>
[[gnu::always_inline]] inline __m128 loadPixel(const float* from) {
  if constexpr (kChannels == 4 || kPixel == Pixel::Joined) return _mm_loadu_ps(from);
  return _mm_maskload_ps(from, _mm_setr_epi32(-1, -1, -1, 0));
}

template <int kChannels, Pixel kPixel>
[[gnu::always_inline]] inline void storePixel(float* to, __m128 pixel) {
  if constexpr (kChannels == 4 || kPixel == Pixel::Joined)
    _mm_storeu_ps(to, pixel);
  else
    _mm_maskstore_ps(to, _mm_setr_epi32(-1, -1, -1, 0), pixel);
}

template <int kChannels, Pixel kPixel>
[[gnu::always_inline]] inline F64 loadPixels(const float* from, [[maybe_unused]] std::size_t stride) {
#if QAV_KERNEL_LEVEL >= 2
  // Cheaper than to join them first and to widen a whole vector.
  return (F64)_mm512_insertf64x4(_mm512_castpd256_pd512(_mm256_cvtps_pd(loadPixel<kChannels, kPixel>(from))),
                                 _mm256_cvtps_pd(loadPixel<kChannels, kPixel>(from + stride)), 1);
#else
  return (F64)_mm256_cvtps_pd(loadPixel<kChannels, kPixel>(from));
#endif
}

template <int kChannels, Pixel kPixel>
[[gnu::always_inline]] inline void storePixels(float* const* rows, std::size_t at, F64 pixels) {
#if QAV_KERNEL_LEVEL >= 2
  const __m256 both = _mm512_cvtpd_ps((__m512d)pixels);
  storePixel<kChannels, kPixel>(rows[0] + at, _mm256_castps256_ps128(both));
  storePixel<kChannels, kPixel>(rows[1] + at, _mm256_extractf128_ps(both, 1));
#else
  storePixel<kChannels, kPixel>(rows[0] + at, _mm256_cvtpd_ps((__m256d)pixels));
#endif
}

template <int kChannels>
struct RowTarget {
  float* const* rows;
  std::size_t first;
  [[gnu::always_inline]] void store(std::size_t x, std::size_t v, F64 sum) const {
    storePixels<kChannels, Pixel::Joined>(rows + v * kRowsOfVector, (first + x) * kChannels, sum);
  }
};

template <int kChannels, Pixel kPixel>
struct RowSource {
  const float* pixel;
  std::size_t stride;
  F64 read(std::size_t v) const { return loadPixels<kChannels, kPixel>(pixel + v * kRowsOfVector * stride, stride); }
  void next() { pixel += kChannels; }
};

// As Fetching does, but position by position as it goes through the rows.
template <int kChannels, std::size_t kCount>
struct FetchingRowSource : RowSource<kChannels, Pixel::Joined> {
  std::uintptr_t ahead;  // may leave the image
  void next() {
    RowSource<kChannels, Pixel::Joined>::next();
    constexpr std::size_t kBytes = kCount * kRowsOfVector * kChannels * sizeof(float);
    for (std::size_t i = 0; i < kBytes; i += kFetchedLine) fetchLine(ahead + i);
    ahead += kBytes;
  }
};

template <int kChannels, Pixel kStored, std::size_t kOutputs, std::size_t kCount>
[[gnu::always_inline]] inline void storeSums(const Sums<kOutputs, kCount>& sums, std::size_t at, float* const* out) {
#pragma GCC unroll 4
  for (std::size_t v = 0; v < kCount; ++v)
#pragma GCC unroll 4
    for (std::size_t o = 0; o < kOutputs; ++o)
      storePixels<kChannels, kStored>(out + v * kRowsOfVector, at + o * kChannels, sums[o][v]);
}

template <int kChannels, Pixel kRead, std::size_t kOutputs, std::size_t kCount>
void rowBlock(const float* from, std::size_t stride, const FloatTaps* taps, std::size_t x, bool isLast,
              float* const* out) {
  Sums<kOutputs, kCount> sums = {};
  const float* const first = from + static_cast<std::size_t>(taps[x].left) * kChannels;
  addAll<false>(taps + x, RowSource<kChannels, kRead>{first, stride}, sums);
  if (kChannels == 4 || !isLast)
    storeSums<kChannels, Pixel::Joined>(sums, x * kChannels, out);
  else
    storeSums<kChannels, Pixel::Alone>(sums, x * kChannels, out);
}

// Positions first to end - 1 of kCount vectors of rows, where the last row may stand for one that is not there.
template <int kChannels, Pixel kRead, std::size_t kCount>
void rowsTogether(const float* from, std::size_t stride, const FloatTaps* taps, std::size_t first, std::size_t end,
                  Fetching& next, float* const* out) {
  for (std::size_t x = first, behind; x < end; x = behind) {
    const bool together = end - x >= kTogether && overlapInOrder(taps + x, kTogether);
    behind = x + (together ? kTogether : 1);
    if (together)
      rowBlock<kChannels, kRead, kTogether, kCount>(from, stride, taps, x, behind == end, out);
    else
      rowBlock<kChannels, kRead, 1, kCount>(from, stride, taps, x, behind == end, out);
    next.portion(behind - x);
  }
}

template <int kChannels, std::size_t kSlots, bool kExact>
bool rowsInTurns(const SourceRows<float>& in, const FloatRun& run, float* const* out) {
  constexpr std::size_t kCount = kSlotVectors<kSlots>;
  using Source = FetchingRowSource<kChannels, kCount>;
  using Target = RowTarget<kChannels>;
  bool finite = true;
  for (std::size_t row = 0; row < kRows; row += kCount * kRowsOfVector) {
    const float* const first = in.first + row * in.stride;
    const Source source{{first + static_cast<std::size_t>(run.source) * kChannels, in.stride},
                        reinterpret_cast<std::uintptr_t>(first + in.ahead)};
    RunningSums<kSlots, kCount, kExact, Source, Target> sums(run, source, {out + row, run.first});
    for (std::size_t x = 0; x < run.count(); x += kSlots) sums.completeAll(x);
    finite = finite && sums.allFinite();
  }
  return finite;
}

template <int kChannels>
bool rowsOfRun(const SourceRows<float>& in, const FloatRun& run, float* const* out) {
  return atShapeOf(run, [&]<std::size_t kSlots, bool kExact>(Shape<kSlots, kExact>) {
    return rowsInTurns<kChannels, kSlots, kExact>(in, run, out);
  });
}

template <int kChannels>
void allRows(const SourceRows<float>& in, const FloatRowPlan& plan, float* const* out) {
  const FloatRun& run = plan.run;
  Fetching next(in.first + in.ahead, run.count() > 0 ? 0 : in.ahead, plan.width);
  const auto inSpans = [&](std::size_t first, std::size_t end) {
    rowsTogether<kChannels, Pixel::Joined, kVectors>(in.first, in.stride, plan.taps, first, end, next, out);
  };
  inSpans(0, run.first);
  if (run.count() > 0 && !rowsOfRun<kChannels>(in, run, out)) inSpans(run.first, run.end);
  inSpans(run.end, plan.width);
}

template <int kChannels>
void rowsOf(const SourceRows<float>& in, const FloatRowPlan& plan, float* const* out) {
  if (in.count == kRows && (kChannels == 4 || in.room)) return allRows<kChannels>(in, plan, out);
  Fetching nothing(in.first, 0, 1);
  for (std::size_t r = 0; r < in.count; r += kRowsOfVector) {
    const bool whole = in.count - r >= kRowsOfVector;
    float* const to[2] = {out[r], out[whole ? r + kRowsOfVector - 1 : r]};
    rowsTogether<kChannels, Pixel::Alone, 1>(in.first + r * in.stride, whole ? in.stride : 0, plan.taps, 0, plan.width,
                                             nothing, to);
  }
}

#else

constexpr std::size_t kRows = 1;

template <int kChannels>
void rowsOf(const SourceRows<float>& in, const FloatRowPlan& plan, float* const* out) {
  const FloatTaps* const taps = plan.taps;
  for (std::size_t x = 0; x < plan.width; ++x) {
    double sums[kChannels] = {};
    const float* from = in.first + static_cast<std::size_t>(taps[x].left) * kChannels;
    for (std::int32_t t = 0; t < taps[x].count; ++t, from += kChannels)
      for (int c = 0; c < kChannels; ++c) sums[c] += static_cast<double>(from[c]) * taps[x].weights[t];
    for (int c = 0; c < kChannels; ++c)
      out[0][x * kChannels + static_cast<std::size_t>(c)] = static_cast<float>(sums[c]);
  }
}

#endif

void rows(const SourceRows<float>& in, const FloatRowPlan& plan, float* const* out) {
  if (in.channels == 4)
    rowsOf<4>(in, plan, out);
  else
    rowsOf<3>(in, plan, out);
}

}  // namespace

extern const FloatResamplingKernels floatResampling;
const FloatResamplingKernels floatResampling = {kRows, kTogether, QAV_KERNEL_LEVEL >= 1, &rows, &columns};

#include "RegionEnd.h"
