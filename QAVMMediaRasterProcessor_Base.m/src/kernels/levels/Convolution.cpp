#include "kernels/Convolution.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

struct Floats {
  using Sum = F32;
  static constexpr int kTaps = 1;
  [[gnu::always_inline]] static U32 widened(const std::uint8_t* at) { return (U32)toFloat(loadWidened32(at)); }
  [[gnu::always_inline]] static Sum added(Sum sum, U32 samples, U32 weights) {
    return sum + (F32)weights * (F32)samples;
  }
  [[gnu::always_inline]] static F32 value(Sum sum) { return sum; }
};

struct Pairs {
  using Sum = I32;
  static constexpr int kTaps = 2;
  [[gnu::always_inline]] static U32 widened(const std::uint8_t* at) {
    return (U32)(loadWidened32(at) | loadWidened32(at + 4) << 16);
  }
  [[gnu::always_inline]] static Sum added(Sum sum, U32 samples, U32 weights) {
#if QAV_KERNEL_LEVEL >= 3
    return (I32)_mm512_dpwssd_epi32((__m512i)sum, (__m512i)samples, (__m512i)weights);
#else
    return sum + multiplyAddPairs((I16)samples, (I16)weights);
#endif
  }
  [[gnu::always_inline]] static F32 value(Sum sum) { return toFloat(sum); }
};

#if QAV_KERNEL_LEVEL >= 3
struct Quads {
  using Sum = I32;
  static constexpr int kTaps = 4;
  [[gnu::always_inline]] static U32 widened(const std::uint8_t* at) {
    const __m512i lane =
        _mm512_add_epi32(_mm512_mullo_epi32(_mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15),
                                            _mm512_set1_epi32(0x01010101)),
                         _mm512_set1_epi32(0x0C080400));
    return (U32)_mm512_permutexvar_epi8(lane, _mm512_loadu_si512(at));
  }
  [[gnu::always_inline]] static Sum added(Sum sum, U32 samples, U32 weights) {
    return (I32)_mm512_dpbusd_epi32((__m512i)sum, (__m512i)samples, (__m512i)weights);
  }
  [[gnu::always_inline]] static F32 value(Sum sum) { return toFloat(sum); }
};
#endif

template <class A>
void widen(const std::uint8_t* bytes, std::size_t count, std::uint32_t* lanes) {
  for (std::size_t i = 0; i < count; i += kLanes<U32>) store(lanes + i, A::widened(bytes + i));
}

// Four vectors of each row of results are summed at the same time: every load serves all rows, and the sums are enough
// to hide the latency of the additions. They are members by name, as the compiler keeps arrays in memory.
inline constexpr int kBlock = 4;

template <class V>
struct Block {
  V v0, v1, v2, v3;
};

// Keeps a value in a register; the compiler would rather read it from memory again for every row of results.
[[gnu::always_inline]] inline U32 inRegister(U32 v) {
#if QAV_KERNEL_LEVEL >= 2
  __asm__("" : "+v"(v));
#elif QAV_KERNEL_LEVEL == 1
  __asm__("" : "+x"(v));
#endif
  return v;
}

template <class A>
[[gnu::always_inline]] inline void addTap(Block<typename A::Sum>& sums, const Block<U32>& samples, std::uint32_t tap) {
  const U32 weight = inRegister(splat<U32>(tap));
  sums.v0 = A::added(sums.v0, samples.v0, weight);
  sums.v1 = A::added(sums.v1, samples.v1, weight);
  sums.v2 = A::added(sums.v2, samples.v2, weight);
  sums.v3 = A::added(sums.v3, samples.v3, weight);
}

[[gnu::always_inline]] inline Block<U32> samplesAt(const std::uint32_t* at) {
  constexpr std::size_t lanes = kLanes<U32>;
  return {inRegister(load<U32>(at)), inRegister(load<U32>(at + lanes)), inRegister(load<U32>(at + 2 * lanes)),
          inRegister(load<U32>(at + 3 * lanes))};
}

template <class A>
struct Sums {
  Block<typename A::Sum> first, second, third;
};

// Adds one source row's taps to the results `from` to `to`.
template <class A, int from, int to>
[[gnu::always_inline]] inline void addRow(Sums<A>& sums, const std::uint32_t* at, const std::uint32_t* weights,
                                          std::ptrdiff_t stride) {
  for (std::ptrdiff_t t = 0; t < stride; ++t, at += 4 * A::kTaps) {
    const Block<U32> samples = samplesAt(at);
    if constexpr (from == 0) addTap<A>(sums.first, samples, weights[t]);
    if constexpr (from <= 1 && to >= 1) addTap<A>(sums.second, samples, weights[t - stride]);
    if constexpr (to == 2) addTap<A>(sums.third, samples, weights[t - 2 * stride]);
  }
}

[[gnu::always_inline]] inline std::ptrdiff_t least(std::ptrdiff_t a, std::ptrdiff_t b) { return a < b ? a : b; }

// A source row has the weights of row `top` of the kernel in the first result, of the row above that in the second, and
// so on; where the kernel has no such row it takes no part.
template <class A, int results>
[[gnu::always_inline]] inline Sums<A> sumsAt(const ConvolutionRows& c, std::size_t i) {
  Sums<A> sums{};
  const std::uint32_t* const* row = c.rows;
  const auto stride = static_cast<std::ptrdiff_t>(c.weightStride);
  std::ptrdiff_t top = c.firstWeightRow;
  const std::ptrdiff_t end = top + c.rowCount;
  const std::uint32_t* weights = c.weights + top * stride;
  if constexpr (results == 1) {
    for (; top < end; ++top, weights += stride) addRow<A, 0, 0>(sums, *row++ + i, weights, stride);
  } else {
    const std::ptrdiff_t all = least(end, c.weightRows), most = least(end, c.weightRows + 1);
    for (; top < least(end, 1); ++top, weights += stride) addRow<A, 0, 0>(sums, *row++ + i, weights, stride);
    for (; top < least(end, 2); ++top, weights += stride) addRow<A, 0, 1>(sums, *row++ + i, weights, stride);
    for (; top < all; ++top, weights += stride) addRow<A, 0, 2>(sums, *row++ + i, weights, stride);
    for (; top < most; ++top, weights += stride) addRow<A, 1, 2>(sums, *row++ + i, weights, stride);
    for (; top < end; ++top, weights += stride) addRow<A, 2, 2>(sums, *row++ + i, weights, stride);
  }
  return sums;
}

[[gnu::always_inline]] inline bool anyLane(I32 mask) {
#if QAV_KERNEL_LEVEL >= 2
  return _mm512_movepi32_mask((__m512i)mask) != 0;
#elif QAV_KERNEL_LEVEL == 1
  return _mm256_movemask_ps((__m256)mask) != 0;
#else
  std::int32_t any = 0;
  for (std::size_t i = 0; i < kLanes<I32>; ++i) any |= mask[i];
  return any != 0;
#endif
}

// The estimate is off by less than 3 parts in 2^24 from the rounded quotient, both below 256 where it matters; so it
// truncates alike unless it lies within 2^-14 of a whole number above 0.
[[gnu::always_inline]] inline bool nearWholeNumber(F32 estimate) {
  const F32 clamped = min(max(estimate, F32{}), splat<F32>(256.0f));
  const F32 margin = splat<F32>(1.0f / 16384);
  const I32 below = truncate(clamped - margin), above = truncate(clamped + margin);
  return anyLane((I32)(below != above));
}

[[gnu::always_inline]] inline F32 quotient(F32 sum, const ConvolutionQuotient& q) {
  if (q.way == ConvolutionQuotient::Divide) return sum / splat<F32>(q.divisor);
  const F32 estimate = (sum + splat<F32>(q.bias)) * splat<F32>(q.reciprocal);
  if (q.way == ConvolutionQuotient::Check && nearWholeNumber(estimate)) return sum / splat<F32>(q.divisor);
  return estimate;
}

template <class A>
[[gnu::always_inline]] inline void writeVector(typename A::Sum sum, const ConvolutionQuotient& q, std::uint8_t* out) {
  // In this order of arguments not-a-number becomes 0.
  const F32 v = min(max(quotient(A::value(sum), q), F32{}), splat<F32>(255.0f));
  storeNarrowed(out, truncate(v));
}

template <class A>
[[gnu::always_inline]] inline void writeBlock(const Block<typename A::Sum>& sums, const ConvolutionQuotient& q,
                                              std::uint8_t* out, std::size_t room) {
  constexpr std::size_t lanes = kLanes<F32>;
  std::uint8_t rest[kBlock * lanes];
  std::uint8_t* const to = room < sizeof rest ? rest : out;
  writeVector<A>(sums.v0, q, to);
  writeVector<A>(sums.v1, q, to + lanes);
  writeVector<A>(sums.v2, q, to + 2 * lanes);
  writeVector<A>(sums.v3, q, to + 3 * lanes);
  if (to == rest) std::memcpy(out, rest, room);
}

template <class A, int results>
void convolveResults(const ConvolutionRows& rows) {
  constexpr std::size_t step = kBlock * kLanes<F32>;
  static_assert(step <= ConvolutionRows::kSlack);
  const ConvolutionQuotient q = rows.quotient;
  for (std::size_t i = 0; i < rows.count; i += step) {
    const Sums<A> sums = sumsAt<A, results>(rows, i);
    writeBlock<A>(sums.first, q, rows.out[0] + i, rows.count - i);
    if constexpr (results > 1) {
      writeBlock<A>(sums.second, q, rows.out[1] + i, rows.count - i);
      writeBlock<A>(sums.third, q, rows.out[2] + i, rows.count - i);
    }
  }
}

template <class A>
void convolve(const ConvolutionRows& rows) {
  if (rows.results == 1)
    convolveResults<A, 1>(rows);
  else
    convolveResults<A, ConvolutionRows::kMostResults>(rows);
}

template <class A>
inline constexpr ConvolutionArithmetic kArithmetic = {A::kTaps, &widen<A>, &convolve<A>};

}  // namespace

extern const ConvolutionKernels convolution;
#if QAV_KERNEL_LEVEL >= 3
const ConvolutionKernels convolution = {kArithmetic<Floats>, kArithmetic<Pairs>, kArithmetic<Quads>};
#else
const ConvolutionKernels convolution = {kArithmetic<Floats>, kArithmetic<Pairs>, {}};
#endif

#include "RegionEnd.h"
