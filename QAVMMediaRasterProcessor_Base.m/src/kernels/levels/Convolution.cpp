#include "kernels/Convolution.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

struct Floats {
  using Sum = F32;
  static constexpr int kTaps = 1;
  static constexpr std::size_t kSampleBytes = 4;
  static constexpr int kUnrolled[] = {3, 5, 7};
  [[gnu::always_inline]] static U32 widened(const std::uint8_t* at) { return (U32)toFloat(loadWidened32(at)); }
  [[gnu::always_inline]] static Sum added(Sum sum, U32 samples, U32 weights) {
    return sum + (F32)weights * (F32)samples;
  }
  [[gnu::always_inline]] static F32 value(Sum sum) { return sum; }
};

struct Pairs {
  using Sum = I32;
  static constexpr int kTaps = 2;
  static constexpr std::size_t kSampleBytes = 4;
  static constexpr int kUnrolled[] = {2, 3, 4};
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
// Rows hold bytes. A vector has the sums of every fourth pixel, so that the lanes are made within quarters of a vector
// and packing brings the results into order.
struct Quads {
  using Sum = I32;
  static constexpr int kTaps = 4;
  static constexpr std::size_t kSampleBytes = 1;
  static constexpr int kUnrolled[] = {1, 2, 3};
  [[gnu::always_inline]] static U32 lanes(const std::uint8_t* at) {
    const __m128i transposed = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    return (U32)_mm512_shuffle_epi8(_mm512_loadu_si512(at), _mm512_broadcast_i32x4(transposed));
  }
  [[gnu::always_inline]] static Sum added(Sum sum, U32 samples, U32 weights) {
    return (I32)_mm512_dpbusd_epi32((__m512i)sum, (__m512i)samples, (__m512i)weights);
  }
  [[gnu::always_inline]] static F32 value(Sum sum) { return toFloat(sum); }
};
#endif

template <class A>
void widen(const std::uint8_t* bytes, std::size_t count, std::uint8_t* lanes) {
  for (std::size_t i = 0; i < count; i += kLanes<U32>) store(lanes + 4 * i, A::widened(bytes + i));
}

// Four vectors of each row of results are summed at the same time: every load serves all rows, and the sums are enough
// to hide the latency of the additions. They are members by name, as the compiler keeps arrays in memory.
inline constexpr int kBlock = 4;

template <class V>
struct Block {
  V v0, v1, v2, v3;
};

// Has a value in a register at this point of the program, in the order written. The compiler would otherwise read a
// sample from memory again for every row of results, and gather all reads of a row before all sums, with more values
// alive than there are registers.
template <class V>
[[gnu::always_inline]] inline V inRegister(V v) {
#if QAV_KERNEL_LEVEL >= 2
  __asm__ volatile("" : "+v"(v));
#elif QAV_KERNEL_LEVEL == 1
  __asm__ volatile("" : "+x"(v));
#endif
  return v;
}

template <class A>
[[gnu::always_inline]] inline void addTap(Block<typename A::Sum>& sums, const Block<U32>& samples, std::uint32_t tap) {
  const U32 weight = inRegister(splat<U32>(tap));
  sums.v0 = inRegister(A::added(sums.v0, samples.v0, weight));
  sums.v1 = inRegister(A::added(sums.v1, samples.v1, weight));
  sums.v2 = inRegister(A::added(sums.v2, samples.v2, weight));
  sums.v3 = inRegister(A::added(sums.v3, samples.v3, weight));
}

template <class A>
[[gnu::always_inline]] inline Block<U32> samplesAt(const std::uint8_t* at) {
  if constexpr (A::kSampleBytes == 1) {
    return {inRegister(A::lanes(at)), inRegister(A::lanes(at + 4)), inRegister(A::lanes(at + 8)),
            inRegister(A::lanes(at + 12))};
  } else {
    constexpr std::size_t n = sizeof(U32);
    return {inRegister(load<U32>(at)), inRegister(load<U32>(at + n)), inRegister(load<U32>(at + 2 * n)),
            inRegister(load<U32>(at + 3 * n))};
  }
}

template <class A>
struct Sums {
  Block<typename A::Sum> first, second, third;
};

template <class A, int from, int to>
[[gnu::always_inline]] inline void addTaps(Sums<A>& sums, const std::uint8_t* at, const std::uint32_t* weights,
                                           std::ptrdiff_t stride) {
  const Block<U32> samples = samplesAt<A>(at);
  if constexpr (from == 0) addTap<A>(sums.first, samples, weights[0]);
  if constexpr (from <= 1 && to >= 1) addTap<A>(sums.second, samples, weights[-stride]);
  if constexpr (to == 2) addTap<A>(sums.third, samples, weights[-2 * stride]);
}

// Adds one source row's taps to the results `from` to `to`. `taps` is how many lanes of weights a row has, or 0 when
// the loop is not unrolled.
template <class A, int taps, int from, int to>
[[gnu::always_inline]] inline void addRow(Sums<A>& sums, const std::uint8_t* at, const std::uint32_t* weights,
                                          std::ptrdiff_t stride) {
  constexpr int step = 4 * A::kTaps * static_cast<int>(A::kSampleBytes);
  if constexpr (taps > 0) {
#pragma GCC unroll 8
    for (int t = 0; t < taps; ++t) addTaps<A, from, to>(sums, at + step * t, weights + t, taps);
  } else {
    for (std::ptrdiff_t t = 0; t < stride; ++t) addTaps<A, from, to>(sums, at + step * t, weights + t, stride);
  }
}

[[gnu::always_inline]] inline std::ptrdiff_t least(std::ptrdiff_t a, std::ptrdiff_t b) { return a < b ? a : b; }

// A source row has the weights of row `top` of the kernel in the first result, of the row above that in the second, and
// so on; where the kernel has no such row it takes no part. `inner` says that the kernel has three rows and that all
// five source rows exist: the loops are unrolled then.
template <class A, int taps, int results, bool inner>
[[gnu::always_inline]] inline Sums<A> sumsAt(const ConvolutionRows& c, std::size_t i) {
  Sums<A> sums{};
  const std::uint8_t* const* row = c.rows;
  i *= A::kSampleBytes;
  const auto stride = static_cast<std::ptrdiff_t>(c.weightStride);
  std::ptrdiff_t top = inner ? 0 : c.firstWeightRow;
  const std::ptrdiff_t end = top + (inner ? 5 : c.rowCount), weightRows = inner ? 3 : c.weightRows;
  const std::uint32_t* weights = c.weights + top * stride;
  if constexpr (results == 1) {
    for (; top < end; ++top, weights += stride) addRow<A, taps, 0, 0>(sums, *row++ + i, weights, stride);
  } else {
    const std::ptrdiff_t all = least(end, weightRows), most = least(end, weightRows + 1);
    for (; top < least(end, 1); ++top, weights += stride) addRow<A, taps, 0, 0>(sums, *row++ + i, weights, stride);
    for (; top < least(end, 2); ++top, weights += stride) addRow<A, taps, 0, 1>(sums, *row++ + i, weights, stride);
    for (; top < all; ++top, weights += stride) addRow<A, taps, 0, 2>(sums, *row++ + i, weights, stride);
    for (; top < most; ++top, weights += stride) addRow<A, taps, 1, 2>(sums, *row++ + i, weights, stride);
    for (; top < end; ++top, weights += stride) addRow<A, taps, 2, 2>(sums, *row++ + i, weights, stride);
  }
  return sums;
}

#if QAV_KERNEL_LEVEL >= 2
// Conversions that cannot be done give the least number, and packing clamps from below. In this order of arguments
// min() keeps not-a-number, which becomes 0 so.
[[gnu::always_inline]] inline __m512i wholeUpTo255(F32 v) {
  return _mm512_cvttps_epi32((__m512)min(splat<F32>(255.0f), v));
}
#else
// In this order of arguments max() turns not-a-number into 0.
[[gnu::always_inline]] inline void storeVector(std::uint8_t* to, F32 v) {
  storeNarrowed(to, truncate(min(max(v, F32{}), splat<F32>(255.0f))));
}
#endif

// Truncates and clamps to bytes.
template <class A>
[[gnu::always_inline]] inline void storeBytes(const Block<F32>& v, std::uint8_t* out) {
#if QAV_KERNEL_LEVEL >= 2
  const __m512i low = _mm512_packus_epi32(wholeUpTo255(v.v0), wholeUpTo255(v.v1));
  const __m512i high = _mm512_packus_epi32(wholeUpTo255(v.v2), wholeUpTo255(v.v3));
  __m512i bytes = _mm512_packus_epi16(low, high);
  if constexpr (A::kSampleBytes > 1)
    bytes = _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), bytes);
  _mm512_storeu_si512(out, bytes);
#else
  storeVector(out, v.v0);
  storeVector(out + kLanes<F32>, v.v1);
  storeVector(out + 2 * kLanes<F32>, v.v2);
  storeVector(out + 3 * kLanes<F32>, v.v3);
#endif
}

#if QAV_KERNEL_LEVEL >= 1
// a * b + c, rounded once.
[[gnu::always_inline]] inline F32 fused(F32 a, F32 b, F32 c) {
#if QAV_KERNEL_LEVEL >= 2
  return (F32)_mm512_fmadd_ps((__m512)a, (__m512)b, (__m512)c);
#else
  return (F32)_mm256_fmadd_ps((__m256)a, (__m256)b, (__m256)c);
#endif
}
#endif

[[gnu::always_inline]] inline Block<F32> quotients(const Block<F32>& s, const ConvolutionQuotient& q) {
  const F32 reciprocal = splat<F32>(q.reciprocal);
  if (q.way == ConvolutionQuotient::Multiply)
    return {s.v0 * reciprocal, s.v1 * reciprocal, s.v2 * reciprocal, s.v3 * reciprocal};
#if QAV_KERNEL_LEVEL >= 1
  if (q.way == ConvolutionQuotient::Refine) {
    const F32 rest = splat<F32>(q.rest);
    return {fused(s.v0, reciprocal, s.v0 * rest), fused(s.v1, reciprocal, s.v1 * rest),
            fused(s.v2, reciprocal, s.v2 * rest), fused(s.v3, reciprocal, s.v3 * rest)};
  }
#endif
  const F32 divisor = splat<F32>(q.divisor);
  return {s.v0 / divisor, s.v1 / divisor, s.v2 / divisor, s.v3 / divisor};
}

#if QAV_KERNEL_LEVEL >= 3
// Clamps sums to words and divides them. The sums are passed by value, as the compiler would keep a block of them in
// memory if it were read as another type.
[[gnu::always_inline]] inline __m512i wordQuotients(I32 low, I32 high, const ConvolutionQuotient& q) {
  const __m512i words = _mm512_packus_epi32((__m512i)low, (__m512i)high);
  const __m512i products = _mm512_mulhi_epu16(words, _mm512_set1_epi16(static_cast<std::int16_t>(q.factor)));
  return _mm512_srl_epi16(products, _mm_cvtsi32_si128(q.shift));
}
#endif

template <class A>
[[gnu::always_inline]] inline void storeQuotients(Block<typename A::Sum> sums, const ConvolutionQuotient& q,
                                                  std::uint8_t* out) {
#if QAV_KERNEL_LEVEL >= 3
  if constexpr (A::kSampleBytes == 1) {
    if (q.way == ConvolutionQuotient::Words)
      return _mm512_storeu_si512(
          out, _mm512_packus_epi16(wordQuotients(sums.v0, sums.v1, q), wordQuotients(sums.v2, sums.v3, q)));
  }
#endif
  const Block<F32> values = {A::value(sums.v0), A::value(sums.v1), A::value(sums.v2), A::value(sums.v3)};
  storeBytes<A>(quotients(values, q), out);
}

template <class A>
[[gnu::always_inline]] inline void writeBlock(Block<typename A::Sum> sums, const ConvolutionQuotient& q,
                                              std::uint8_t* out, std::size_t room) {
  std::uint8_t rest[kBlock * kLanes<F32>];
  const bool whole = room >= sizeof rest;
  storeQuotients<A>(sums, q, whole ? out : rest);
  if (!whole) std::memcpy(out, rest, room);
}

template <class A, int taps, int results, bool inner = false>
void convolveResults(const ConvolutionRows& rows) {
  constexpr std::size_t step = kBlock * kLanes<F32>;
  static_assert(step <= ConvolutionRows::kSlack);
  const ConvolutionQuotient q = rows.quotient;
  for (std::size_t i = 0; i < rows.count; i += step) {
    const Sums<A> sums = sumsAt<A, taps, results, inner>(rows, i);
    writeBlock<A>(sums.first, q, rows.out[0] + i, rows.count - i);
    if constexpr (results > 1) {
      writeBlock<A>(sums.second, q, rows.out[1] + i, rows.count - i);
      writeBlock<A>(sums.third, q, rows.out[2] + i, rows.count - i);
    }
  }
}

template <class A>
void convolve(const ConvolutionRows& rows) {
  constexpr int most = ConvolutionRows::kMostResults;
  const auto stride = static_cast<int>(rows.weightStride < 8 ? rows.weightStride : 0);
  if (rows.results == 1) return convolveResults<A, 0, 1>(rows);
  if (stride == A::kUnrolled[0] && rows.weightRows == 3 && rows.rowCount == 5)
    return convolveResults<A, A::kUnrolled[0], most, true>(rows);
  if (stride == A::kUnrolled[0]) return convolveResults<A, A::kUnrolled[0], most>(rows);
  if (stride == A::kUnrolled[1]) return convolveResults<A, A::kUnrolled[1], most>(rows);
  if (stride == A::kUnrolled[2]) return convolveResults<A, A::kUnrolled[2], most>(rows);
  convolveResults<A, 0, most>(rows);
}

template <class A>
inline constexpr ConvolutionArithmetic kWidened = {A::kTaps, A::kSampleBytes, &widen<A>, &convolve<A>};

}  // namespace

extern const ConvolutionKernels convolution;
#if QAV_KERNEL_LEVEL >= 3
const ConvolutionKernels convolution = {
    kWidened<Floats>, kWidened<Pairs>, {Quads::kTaps, Quads::kSampleBytes, nullptr, &convolve<Quads>}};
#else
const ConvolutionKernels convolution = {kWidened<Floats>, kWidened<Pairs>, {}};
#endif

#include "RegionEnd.h"
