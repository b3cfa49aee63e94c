#include "kernels/Convolution.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

struct Floats {
  using Sum = F32;
  static constexpr int kTaps = 1;
  static constexpr int kDigits = 1;
  static constexpr std::size_t kSampleBytes = 4;
  [[gnu::always_inline]] static U32 widened(const std::uint8_t* at) { return (U32)toFloat(loadWidened32(at)); }
  [[gnu::always_inline]] static Sum added(Sum sum, U32 samples, U32 weights) {
    return sum + (F32)weights * (F32)samples;
  }
  [[gnu::always_inline]] static Sum start(std::int32_t) { return Sum{}; }
  [[gnu::always_inline]] static F32 value(Sum sum) { return sum; }
};

struct Pairs {
  using Sum = I32;
  [[maybe_unused]] static constexpr int kTaps = 2;
  [[maybe_unused]] static constexpr int kDigits = 1;
  [[maybe_unused]] static constexpr std::size_t kSampleBytes = 4;
  [[gnu::always_inline]] static U32 widened(const std::uint8_t* at) {
    return (U32)(loadWidened32(at) | loadWidened32(at + 4) << 16);
  }
  [[gnu::always_inline]] static Sum added(Sum sum, U32 samples, U32 weights) {
    return sum + multiplyAddPairs((I16)samples, (I16)weights);
  }
  [[gnu::always_inline]] static Sum start(std::int32_t at) { return splat<I32>(at); }
  [[gnu::always_inline]] static F32 value(Sum sum) { return toFloat(sum); }
};

#if QAV_KERNEL_LEVEL >= 3
// Rows hold bytes. A vector has the sums of every fourth pixel, so that the lanes are made within quarters of a vector
// and packing brings the results into order.
struct Quads {
  using Sum = I32;
  static constexpr int kTaps = 4;
  static constexpr int kDigits = 1;
  static constexpr std::size_t kSampleBytes = 1;
  [[gnu::always_inline]] static U32 lanes(const std::uint8_t* at) {
    const __m128i transposed = _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    return (U32)_mm512_shuffle_epi8(_mm512_loadu_si512(at), _mm512_broadcast_i32x4(transposed));
  }
  template <int bits>
  [[gnu::always_inline]] static U32 joined(U32 low, U32 high) {
    return (U32)_mm512_shrdi_epi32((__m512i)low, (__m512i)high, bits);
  }
  [[gnu::always_inline]] static I32 added(I32 sum, U32 samples, U32 weights) {
    return (I32)_mm512_dpbusd_epi32((__m512i)sum, (__m512i)samples, (__m512i)weights);
  }
  [[gnu::always_inline]] static Sum start(std::int32_t at) { return splat<I32>(at); }
  [[gnu::always_inline]] static F32 value(Sum sum) { return toFloat(sum); }
};

// The same with weights of two digits, each with a sum of its own.
struct DigitQuads : Quads {
  static constexpr int kDigits = 2;
  [[gnu::always_inline]] static I32 total(I32 low, I32 high) { return low + (high << 8); }
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

// The sums of a block of results. The high ones are those of the weights' second digit, if there is one.
template <class A>
struct Result {
  Block<typename A::Sum> low, high;
};

template <class A>
[[gnu::always_inline]] inline void addDigit(Block<typename A::Sum>& sums, const Block<U32>& samples,
                                            std::uint32_t digit) {
  const U32 weight = inRegister(splat<U32>(digit));
  sums.v0 = inRegister(A::added(sums.v0, samples.v0, weight));
  sums.v1 = inRegister(A::added(sums.v1, samples.v1, weight));
  sums.v2 = inRegister(A::added(sums.v2, samples.v2, weight));
  sums.v3 = inRegister(A::added(sums.v3, samples.v3, weight));
}

template <class A>
[[gnu::always_inline]] inline void addTap(Result<A>& result, const Block<U32>& samples, const std::uint32_t* tap) {
  addDigit<A>(result.low, samples, tap[0]);
  if constexpr (A::kDigits == 2) addDigit<A>(result.high, samples, tap[1]);
}

template <class A>
[[gnu::always_inline]] inline Block<typename A::Sum> totals(Result<A> r) {
  if constexpr (A::kDigits == 1) {
    return r.low;
  } else {
    return {A::total(r.low.v0, r.high.v0), A::total(r.low.v1, r.high.v1), A::total(r.low.v2, r.high.v2),
            A::total(r.low.v3, r.high.v3)};
  }
}

template <class A>
[[gnu::always_inline]] inline Block<U32> samplesAt(const std::uint8_t* at) {
  if constexpr (A::kSampleBytes == 1) {
    // The lane of the next pixel has three samples of this lane and one of the lane a quarter on.
    const U32 here = inRegister(A::lanes(at)), next = inRegister(A::lanes(at + 16));
    return {here, inRegister(A::template joined<8>(here, next)), inRegister(A::template joined<16>(here, next)),
            inRegister(A::template joined<24>(here, next))};
  } else {
    constexpr std::size_t n = sizeof(U32);
    return {inRegister(load<U32>(at)), inRegister(load<U32>(at + n)), inRegister(load<U32>(at + 2 * n)),
            inRegister(load<U32>(at + 3 * n))};
  }
}

template <class A>
struct Sums {
  Result<A> first, second, third;
};

template <class A, int from, int to>
[[gnu::always_inline]] inline void addTaps(Sums<A>& sums, const std::uint8_t* at, const std::uint32_t* weights,
                                           std::ptrdiff_t stride) {
  const Block<U32> samples = samplesAt<A>(at);
  if constexpr (from == 0) addTap<A>(sums.first, samples, weights);
  if constexpr (from <= 1 && to >= 1) addTap<A>(sums.second, samples, weights - stride);
  if constexpr (to == 2) addTap<A>(sums.third, samples, weights - 2 * stride);
}

// How many lanes of weights a row of `size` taps has.
template <class A>
constexpr int lanesOf(int size) {
  return (size + A::kTaps - 1) / A::kTaps;
}

// Adds one source row's taps to the results `from` to `to`. The loop is unrolled for a known size of the kernel, which
// is 0 otherwise; `stride` counts the digits of a row of weights.
template <class A, int size, int from, int to>
[[gnu::always_inline]] inline void addRow(Sums<A>& sums, const std::uint8_t* at, const std::uint32_t* weights,
                                          std::ptrdiff_t stride) {
  constexpr int step = 4 * A::kTaps * static_cast<int>(A::kSampleBytes), digits = A::kDigits;
  if constexpr (size > 0) {
    constexpr int lanes = lanesOf<A>(size);
#pragma GCC unroll 8
    for (int t = 0; t < lanes; ++t) addTaps<A, from, to>(sums, at + step * t, weights + digits * t, stride);
  } else {
    for (std::ptrdiff_t t = 0; t < stride; t += digits, at += step) addTaps<A, from, to>(sums, at, weights + t, stride);
  }
}

[[gnu::always_inline]] inline std::ptrdiff_t least(std::ptrdiff_t a, std::ptrdiff_t b) { return a < b ? a : b; }

// Three results of a kernel of a known size of which all source rows exist. A source row has the weights of row `r` of
// the kernel in the first result, of the row above that in the second, and so on; where the kernel has no such row it
// takes no part.
template <class A, int size>
[[gnu::always_inline]] inline void addAllRows(Sums<A>& sums, const ConvolutionRows& c, std::size_t i) {
  constexpr int stride = A::kDigits * lanesOf<A>(size);
  const std::uint32_t* const w = c.weights;
  addRow<A, size, 0, 0>(sums, c.rows[0] + i, w, stride);
  addRow<A, size, 0, 1>(sums, c.rows[1] + i, w + stride, stride);
#pragma GCC unroll 5
  for (int r = 2; r < size; ++r) addRow<A, size, 0, 2>(sums, c.rows[r] + i, w + r * stride, stride);
  addRow<A, size, 1, 2>(sums, c.rows[size] + i, w + size * stride, stride);
  addRow<A, size, 2, 2>(sums, c.rows[size + 1] + i, w + (size + 1) * stride, stride);
}

// The same for any kernel and the source rows that there are.
template <class A, int results>
[[gnu::always_inline]] inline void addRows(Sums<A>& sums, const ConvolutionRows& c, std::size_t i) {
  const std::uint8_t* const* row = c.rows;
  const auto stride = A::kDigits * static_cast<std::ptrdiff_t>(c.weightStride);
  std::ptrdiff_t r = c.firstWeightRow;
  const std::ptrdiff_t end = r + c.rowCount, weightRows = c.weightRows;
  const std::uint32_t* w = c.weights + r * stride;
  if constexpr (results == 1) {
    for (; r < end; ++r, w += stride) addRow<A, 0, 0, 0>(sums, *row++ + i, w, stride);
  } else {
    const std::ptrdiff_t all = least(end, weightRows), most = least(end, weightRows + 1);
    for (; r < least(end, 1); ++r, w += stride) addRow<A, 0, 0, 0>(sums, *row++ + i, w, stride);
    for (; r < least(end, 2); ++r, w += stride) addRow<A, 0, 0, 1>(sums, *row++ + i, w, stride);
    for (; r < all; ++r, w += stride) addRow<A, 0, 0, 2>(sums, *row++ + i, w, stride);
    for (; r < most; ++r, w += stride) addRow<A, 0, 1, 2>(sums, *row++ + i, w, stride);
    for (; r < end; ++r, w += stride) addRow<A, 0, 2, 2>(sums, *row++ + i, w, stride);
  }
}

template <class A, int results, int size>
[[gnu::always_inline]] inline Sums<A> sumsAt(const ConvolutionRows& c, std::size_t i) {
  // Number by number: as a copy of a block this would go through memory.
  const typename A::Sum s = A::start(c.start), z{};
  Sums<A> sums = {{{s, s, s, s}, {z, z, z, z}}, {{s, s, s, s}, {z, z, z, z}}, {{s, s, s, s}, {z, z, z, z}}};
  if constexpr (size > 0)
    addAllRows<A, size>(sums, c, i * A::kSampleBytes);
  else
    addRows<A, results>(sums, c, i * A::kSampleBytes);
  return sums;
}

// In this order of arguments max() turns not-a-number into 0.
[[gnu::always_inline]] inline void storeVector(std::uint8_t* to, F32 v) {
  storeNarrowed(to, truncate(min(max(v, F32{}), splat<F32>(255.0f))));
}

#if QAV_KERNEL_LEVEL >= 1
// Clamped to 0..255, in the order of the samples.
template <class A>
[[gnu::always_inline]] inline U8 narrowed(I32 v0, I32 v1, I32 v2, I32 v3) {
#if QAV_KERNEL_LEVEL >= 2
  const __m512i low = _mm512_packs_epi32((__m512i)v0, (__m512i)v1);
  const __m512i high = _mm512_packs_epi32((__m512i)v2, (__m512i)v3);
  const __m512i bytes = _mm512_packus_epi16(low, high);
  if constexpr (A::kSampleBytes == 1) return (U8)bytes;
  return (U8)_mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), bytes);
#else
  const __m256i low = _mm256_packs_epi32((__m256i)v0, (__m256i)v1);
  const __m256i high = _mm256_packs_epi32((__m256i)v2, (__m256i)v3);
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  return (U8)_mm256_permutevar8x32_epi32(_mm256_packus_epi16(low, high), order);
#endif
}
#endif

#if QAV_KERNEL_LEVEL >= 2
// Conversions that cannot be done give the least number, and packing clamps from below. In this order of arguments
// min() keeps not-a-number, which becomes 0 so.
[[gnu::always_inline]] inline I32 wholeUpTo255(F32 v) {
  return (I32)_mm512_cvttps_epi32((__m512)min(splat<F32>(255.0f), v));
}
#endif

// Truncates and clamps to bytes.
template <class A>
[[gnu::always_inline]] inline void storeBytes(const Block<F32>& v, std::uint8_t* out) {
#if QAV_KERNEL_LEVEL >= 2
  store(out, narrowed<A>(wholeUpTo255(v.v0), wholeUpTo255(v.v1), wholeUpTo255(v.v2), wholeUpTo255(v.v3)));
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

// Taps of a row from which on bounds are worth while; 0 where there are none.
template <class A>
inline constexpr int kBoundedFrom = 0;
template <class A>
inline constexpr bool kBounded = kBoundedFrom<A> != 0;

// Where there are no bounds, there are no doubts.
template <class A, bool bounded>
class Doubts {
 public:
  explicit Doubts(const ConvolutionRows&) {}
  void note(std::size_t, int, std::uint64_t) {}
  void makeRoom() {}
  void resolveAll() {}
};

#if QAV_KERNEL_LEVEL >= 1
}  // namespace
#include "BoundedConvolution.h"
namespace {
#endif

// The lanes whose bytes are in doubt.
template <class A>
[[gnu::always_inline]] inline std::uint64_t writeBlock(Result<A> result, const ConvolutionRows& c, int row,
                                                       std::size_t i) {
  std::uint8_t rest[kBlock * kLanes<F32>];
  const std::size_t room = c.count - i;
  const bool whole = room >= sizeof rest;
  std::uint8_t* const out = whole ? c.out[row] + i : rest;
  std::uint64_t doubt = 0;
  if constexpr (kBounded<A>) {
    if (c.bound)
      doubt = storeBounded<A>(totals(result), *c.bound, room, out);
    else
      storeQuotients<A>(totals(result), c.quotient, out);
  } else {
    storeQuotients<A>(totals(result), c.quotient, out);
  }
  if (!whole) std::memcpy(c.out[row] + i, rest, room);
  return doubt;
}

// Asks for the samples that the next three results need besides the rows that have been read. They may lie behind the
// image, which does no harm.
[[maybe_unused, gnu::always_inline]] inline void prefetchNextRows(const ConvolutionRows& c, std::size_t i) {
  const std::uintptr_t ahead =
      (ConvolutionRows::kMostResults + static_cast<std::size_t>(c.weightRows) / 2) * c.count + i;
  for (int r = 0; r < ConvolutionRows::kMostResults; ++r)
    __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(c.out[r]) + ahead));
}

template <class A, int results, int size = 0>
void convolveResults(const ConvolutionRows& rows) {
  constexpr std::size_t step = kBlock * kLanes<F32>;
  static_assert(step <= ConvolutionRows::kSlack);
  Doubts<A, kBounded<A>> doubts(rows);
  for (std::size_t i = 0; i < rows.count; i += step) {
    const Sums<A> sums = sumsAt<A, results, size>(rows, i);
    doubts.note(i, 0, writeBlock<A>(sums.first, rows, 0, i));
    if constexpr (results > 1) {
      if constexpr (A::kSampleBytes == 1) prefetchNextRows(rows, i);
      doubts.note(i, 1, writeBlock<A>(sums.second, rows, 1, i));
      doubts.note(i, 2, writeBlock<A>(sums.third, rows, 2, i));
    }
    doubts.makeRoom();
  }
  doubts.resolveAll();
}

template <class A>
void convolve(const ConvolutionRows& rows) {
  constexpr int most = ConvolutionRows::kMostResults;
  if (rows.results == 1) return convolveResults<A, 1>(rows);
  const auto lanes = static_cast<int>(least(static_cast<std::ptrdiff_t>(rows.weightStride), 8));
  const std::ptrdiff_t size = rows.rowCount == rows.weightRows + most - 1 ? rows.weightRows : 0;
  if (size == 3 && lanes == lanesOf<A>(3)) return convolveResults<A, most, 3>(rows);
  if (size == 5 && lanes == lanesOf<A>(5)) return convolveResults<A, most, 5>(rows);
  if (size == 7 && lanes == lanesOf<A>(7)) return convolveResults<A, most, 7>(rows);
  convolveResults<A, most>(rows);
}

template <class A>
inline constexpr ConvolutionArithmetic kWidened = {A::kTaps,        A::kDigits, kBoundedFrom<A>,
                                                   A::kSampleBytes, &widen<A>,  &convolve<A>};

#if QAV_KERNEL_LEVEL >= 3
template <class A>
inline constexpr ConvolutionArithmetic kOfBytes = {A::kTaps,        A::kDigits, kBoundedFrom<A>,
                                                   A::kSampleBytes, nullptr,    &convolve<A>};
#endif

}  // namespace

extern const ConvolutionKernels convolution;
#if QAV_KERNEL_LEVEL >= 3
const ConvolutionKernels convolution = {kWidened<Floats>, kOfBytes<DigitQuads>, kOfBytes<Quads>};
#else
const ConvolutionKernels convolution = {kWidened<Floats>, kWidened<Pairs>, {}};
#endif

#include "RegionEnd.h"
