#include "kernels/ByteResampling.h"

#include <algorithm>
#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

#include "Fetching.h"
#if QAV_KERNEL_LEVEL >= 1
#include "ByteSums.h"

#include "ByteGroups.h"
#endif

namespace {

constexpr std::size_t kDoubles = kLanes<F64>;

[[gnu::always_inline]] inline F64 doublesFromBytes(const std::uint8_t* from) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_cvtepi32_pd(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from))));
#elif QAV_KERNEL_LEVEL == 1
  std::int32_t four;
  std::memcpy(&four, from, sizeof four);
  return (F64)_mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(four)));
#else
  return F64{static_cast<double>(from[0]), static_cast<double>(from[1])};
#endif
}

// Rounds half up and limits to 0..255; not-a-number gives 0.
[[gnu::always_inline]] inline void storeRounded(std::uint8_t* to, F64 sum) {
  const F64 v = sum + splat<F64>(0.5);
#if QAV_KERNEL_LEVEL >= 2
  const __m512d limited = _mm512_min_pd(_mm512_max_pd((__m512d)v, _mm512_setzero_pd()), _mm512_set1_pd(255.0));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm256_cvtepi32_epi8(_mm512_cvttpd_epi32(limited)));
#elif QAV_KERNEL_LEVEL == 1
  const __m256d limited = _mm256_min_pd(_mm256_max_pd((__m256d)v, _mm256_setzero_pd()), _mm256_set1_pd(255.0));
  const __m128i ints = _mm256_cvttpd_epi32(limited);
  const std::int32_t four = _mm_cvtsi128_si32(_mm_shuffle_epi8(ints, _mm_set1_epi32(0x0C080400)));
  std::memcpy(to, &four, sizeof four);
#else
  for (std::size_t i = 0; i < kDoubles; ++i)
    to[i] = v[i] >= 255.0 ? 255 : v[i] > 0.0 ? static_cast<std::uint8_t>(v[i]) : 0;
#endif
}

std::uint8_t exactSample(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps) {
  double sum = 0.0;
  for (std::int32_t t = 0; t < taps.count; ++t) sum += static_cast<double>(rows[t][at]) * taps.weights[t];
  const double v = sum + 0.5;
  return v >= 255.0 ? 255 : v > 0.0 ? static_cast<std::uint8_t>(v) : 0;
}

// kCount columns from `at` on.
template <std::size_t kCount>
[[gnu::noinline]] void exactColumns(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                    std::uint8_t* out) {
  constexpr std::size_t kVectors = kCount / kDoubles;
  F64 sums[kVectors] = {};
  for (std::int32_t t = 0; t < taps.count; ++t) {
    const F64 weight = splat<F64>(taps.weights[t]);
    const std::uint8_t* const row = rows[t] + at;
#pragma GCC unroll 8
    for (std::size_t v = 0; v < kVectors; ++v) sums[v] += doublesFromBytes(row + v * kDoubles) * weight;
  }
#pragma GCC unroll 8
  for (std::size_t v = 0; v < kVectors; ++v) storeRounded(out + at + v * kDoubles, sums[v]);
}

#if QAV_KERNEL_LEVEL >= 1

[[gnu::always_inline]] inline void interleaveRows(const std::uint8_t* const* rows, std::size_t at, U8 (&out)[4]) {
#if QAV_KERNEL_LEVEL >= 2
  using V = __m512i;
  const auto low8 = [](V a, V b) { return _mm512_unpacklo_epi8(a, b); };
  const auto high8 = [](V a, V b) { return _mm512_unpackhi_epi8(a, b); };
  const auto low16 = [](V a, V b) { return _mm512_unpacklo_epi16(a, b); };
  const auto high16 = [](V a, V b) { return _mm512_unpackhi_epi16(a, b); };
#else
  using V = __m256i;
  const auto low8 = [](V a, V b) { return _mm256_unpacklo_epi8(a, b); };
  const auto high8 = [](V a, V b) { return _mm256_unpackhi_epi8(a, b); };
  const auto low16 = [](V a, V b) { return _mm256_unpacklo_epi16(a, b); };
  const auto high16 = [](V a, V b) { return _mm256_unpackhi_epi16(a, b); };
#endif
  const V a = (V)load<U8>(rows[0] + at), b = (V)load<U8>(rows[1] + at);
  const V c = (V)load<U8>(rows[2] + at), d = (V)load<U8>(rows[3] + at);
  const V abLow = low8(a, b), abHigh = high8(a, b), cdLow = low8(c, d), cdHigh = high8(c, d);
  out[0] = (U8)low16(abLow, cdLow);
  out[1] = (U8)high16(abLow, cdLow);
  out[2] = (U8)low16(abHigh, cdHigh);
  out[3] = (U8)high16(abHigh, cdHigh);
}

#if QAV_KERNEL_LEVEL >= 3
// Sixteen doubtful columns at a time: with ratios that are rich in exact halves most blocks have about as many.
[[gnu::noinline]] void decideColumns(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                     Rounded rounded, std::uint8_t* out) {
  __m512i bytes = (__m512i)rounded.bytes;
  for (std::uint64_t left = rounded.doubtful; left != 0;) {
    const std::uint64_t which = _pdep_u64(0xFFFF, left);
    left &= ~which;
    F64 low{}, high{};
    for (std::int32_t t = 0; t < taps.count; ++t) {
      const __m512i samples = _mm512_maskz_compress_epi8(which, (__m512i)load<U8>(rows[t] + at));
      addExactly(low, high, (I32)_mm512_cvtepu8_epi32(_mm512_castsi512_si128(samples)), splat<F64>(taps.weights[t]));
    }
    bytes = _mm512_mask_expand_epi8(bytes, which, _mm512_castsi128_si512(roundedBytes(low, high)));
  }
  store(out + at, (U8)bytes);
}
#else
// Sixteen columns at a time.
[[gnu::noinline]] void decideColumns(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                     const Rounded& rounded, std::uint8_t* out) {
  for (std::uint64_t doubtful = rounded.doubtful; doubtful != 0; doubtful >>= 16, at += 16)
    if (doubtful & 0xFFFF) exactColumns<16>(rows, at, taps, out);
}
#endif

template <int kDigits>
[[gnu::always_inline]] inline void integerColumns(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                                  const ByteWeights& weights, std::uint8_t* out) {
  Sum<kDigits> s0(taps), s1(taps), s2(taps), s3(taps);
  for (std::int32_t g = 0; g < taps.groups; ++g) {
    U8 bytes[4];
    interleaveRows(rows + 4 * g, at, bytes);
    const std::int32_t* const digits = taps.digits + g * kDigits;
    s0.add(bytes[0], digits);
    s1.add(bytes[1], digits);
    s2.add(bytes[2], digits);
    s3.add(bytes[3], digits);
  }
  const Rounded rounded = roundedSums(s0, s1, s2, s3, weights);
  store(out + at, rounded.bytes);
  if (rounded.doubtful) [[unlikely]]
    decideColumns(rows, at, taps, rounded, out);
}

#endif

template <class Block>
[[gnu::always_inline]] inline void overColumns(const std::uint8_t* const* rows, std::size_t first, std::size_t end,
                                               const ByteTaps& taps, std::uint8_t* out, Block block) {
  std::size_t at = first;
  for (; at + kVectorBytes <= end; at += kVectorBytes) block(at);
  // The last columns lie in a block that begins among those already done.
  if (at < end && end - first >= kVectorBytes)
    block(end - kVectorBytes);
  else
    for (; at < end; ++at) out[at] = exactSample(rows, at, taps);
}

void columns(const std::uint8_t* const* rows, std::size_t first, std::size_t end, const ByteTaps& taps,
             [[maybe_unused]] const ByteWeights& weights, std::uint8_t* out) {
  const auto over = [&](auto block) { overColumns(rows, first, end, taps, out, block); };
#if QAV_KERNEL_LEVEL >= 1
  if (taps.sum == ByteSum::OneDigit)
    return over([&](std::size_t at) { integerColumns<1>(rows, at, taps, weights, out); });
  if (taps.sum == ByteSum::Ratio) return over([&](std::size_t at) { integerColumns<2>(rows, at, taps, weights, out); });
  if (taps.sum == ByteSum::ThreeDigits)
    return over([&](std::size_t at) { integerColumns<3>(rows, at, taps, weights, out); });
#endif
  over([&](std::size_t at) { exactColumns<kVectorBytes>(rows, at, taps, out); });
}

#if QAV_KERNEL_LEVEL >= 1

// One pixel of the rows of a vector, four channels each.
[[gnu::always_inline]] inline __m128i exactPixel(const Groups& groups, const ByteTaps& taps) {
  F64 low{}, high{};
  for (std::int32_t t = 0; t < taps.count; ++t) {
    const std::int32_t j = taps.left + t;
    const U32 group = load<U32>(groups.at(j / 4));
    addExactly(low, high, (I32)(group >> (8 * (j % 4)) & 255u), splat<F64>(taps.weights[t]));
  }
  return roundedBytes(low, high);
}

// Makes the pixels of one column of a block those given: 32 bits of `pixels` for each row.
[[gnu::always_inline]] inline U8 withPixels(U8 block, std::size_t column, __m128i pixels) {
#if QAV_KERNEL_LEVEL >= 2
  const __m512i order = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
  return (U8)_mm512_mask_permutexvar_epi32((__m512i)block, static_cast<__mmask16>(0x1111u << column), order,
                                           _mm512_castsi128_si512(pixels));
#else
  const __m256i order = _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1), columns = _mm256_setr_epi32(0, 1, 2, 3, 0, 1, 2, 3);
  const __m256i here = _mm256_cmpeq_epi32(columns, _mm256_set1_epi32(static_cast<int>(column)));
  return (U8)_mm256_blendv_epi8((__m256i)block, _mm256_permutevar8x32_epi32(_mm256_castsi128_si256(pixels), order),
                                here);
#endif
}

// Decides the pixels of a four that `which` names; in each lane of `block` are the four pixels of one row.
[[gnu::noinline]] U8 exactBlock(U8 block, const Groups& groups, const ByteTaps* taps, std::size_t count,
                                unsigned which) {
  for (std::size_t p = 0; p < count; ++p)
    if (which >> p & 1u) block = withPixels(block, p, exactPixel(groups, taps[p]));
  return block;
}

// The sums of a four of pixels in one vector of rows.
template <int kDigits>
struct FourSums {
  Sum<kDigits> s0, s1, s2, s3;

  [[gnu::always_inline]] FourSums(const ByteTaps* taps, std::size_t count)
      : s0(taps[0]), s1(taps[count > 1 ? 1 : 0]), s2(taps[count > 2 ? 2 : 0]), s3(taps[count > 3 ? 3 : 0]) {}
  [[gnu::always_inline]] Rounded rounded(const ByteWeights& weights) const {
    return roundedSums(s0, s1, s2, s3, weights);
  }
};

// Where the groups of each of four pixels begin, and their digits, which stand side by side.
struct FourSources {
  const std::uint8_t *p0, *p1, *p2, *p3;
  const std::int32_t* digits;

  [[gnu::always_inline]] FourSources(const Groups& groups, const ByteTaps* taps, std::size_t count)
      : p0(firstOf(groups, taps[0])),
        p1(firstOf(groups, taps[count > 1 ? 1 : 0])),
        p2(firstOf(groups, taps[count > 2 ? 2 : 0])),
        p3(firstOf(groups, taps[count > 3 ? 3 : 0])),
        digits(taps[0].digits) {}
  [[gnu::always_inline]] static const std::uint8_t* firstOf(const Groups& groups, const ByteTaps& taps) {
    return taps.groups > 0 ? groups.at(taps.firstGroup) : groups.bytes;
  }
  // The first two pixels look at the same groups, and so do the others.
  [[gnu::always_inline]] bool inPairs() const { return p0 == p1 && p2 == p3; }
};

// Adds a group of both vectors of rows to the sums of a pixel, or of the next one, too, which looks at the same.
template <bool kForTwo, int kDigits>
[[gnu::always_inline]] inline void addGroup(const std::uint8_t* from, const std::int32_t* digits, Sum<kDigits>& first,
                                            Sum<kDigits>& second, Sum<kDigits>& nextFirst, Sum<kDigits>& nextSecond) {
  U8 bytes = load<U8>(from), others = load<U8>(from + kVectorBytes);
#if QAV_KERNEL_LEVEL >= 3
  // Keeps the compiler from reading the same bytes again for every digit.
  __asm__("" : "+v"(bytes), "+v"(others));
#endif
  first.add(bytes, digits);
  second.add(others, digits);
  if constexpr (kForTwo) {
    nextFirst.add(bytes, digits + kDigits);
    nextSecond.add(others, digits + kDigits);
  }
}

// All groups of one pixel.
template <int kDigits>
[[gnu::always_inline]] inline void addPixel(const std::uint8_t* from, const std::int32_t* digits, std::int32_t groups,
                                            Sum<kDigits>& first, Sum<kDigits>& second) {
  for (std::int32_t g = 0; g < groups; ++g, from += kGroupBytes, digits += kBlock * kDigits)
    addGroup<false>(from, digits, first, second, first, second);
}

// Four pixels of as many groups. kInPairs: the first two look at the same groups, and so do the others.
template <bool kInPairs, int kDigits>
[[gnu::always_inline]] inline void addFour(const FourSources& sources, std::int32_t groups, FourSums<kDigits>& first,
                                           FourSums<kDigits>& second) {
  const std::int32_t* digits = sources.digits;
  const std::size_t end = static_cast<std::size_t>(groups) * kGroupBytes;
  for (std::size_t at = 0; at < end; at += kGroupBytes, digits += kBlock * kDigits) {
    addGroup<kInPairs>(sources.p0 + at, digits, first.s0, second.s0, first.s1, second.s1);
    if (!kInPairs) addGroup<false>(sources.p1 + at, digits + kDigits, first.s1, second.s1, first.s1, second.s1);
    addGroup<kInPairs>(sources.p2 + at, digits + 2 * kDigits, first.s2, second.s2, first.s3, second.s3);
    if (!kInPairs) addGroup<false>(sources.p3 + at, digits + 3 * kDigits, first.s3, second.s3, first.s3, second.s3);
  }
}

// Where there are enough registers for the sums of four pixels in two vectors of rows.
template <int kDigits>
inline constexpr bool kFourTogether = QAV_KERNEL_LEVEL >= 2 || kDigits == 1;

template <int kDigits>
[[gnu::always_inline]] inline void addGroups(const Groups& groups, const ByteTaps* taps, std::size_t count,
                                             FourSums<kDigits>& first, FourSums<kDigits>& second) {
  const FourSources s(groups, taps, count);
  const std::int32_t g0 = taps[0].groups, g1 = count > 1 ? taps[1].groups : g0, g2 = count > 2 ? taps[2].groups : g0,
                     g3 = count > 3 ? taps[3].groups : g0;
  if (!kFourTogether<kDigits> || g1 != g0 || g2 != g0 || g3 != g0) {
    addPixel(s.p0, s.digits, g0, first.s0, second.s0);
    if (count > 1) addPixel(s.p1, s.digits + kDigits, g1, first.s1, second.s1);
    if (count > 2) addPixel(s.p2, s.digits + 2 * kDigits, g2, first.s2, second.s2);
    if (count > 3) addPixel(s.p3, s.digits + 3 * kDigits, g3, first.s3, second.s3);
  } else if (kDigits == 1 && s.inPairs()) {  // sums of one digit would wait for the reading of bytes
    addFour<true>(s, g0, first, second);
  } else {
    addFour<false>(s, g0, first, second);
  }
}

// Which pixels of a four have a byte in any of the rows among these.
[[gnu::always_inline]] inline unsigned doubtfulPixels(std::uint64_t bytes) {
  bytes |= bytes >> 32;
  bytes |= bytes >> 16;
  return (bytes & 0xF ? 1u : 0u) | (bytes & 0xF0 ? 2u : 0u) | (bytes & 0xF00 ? 4u : 0u) | (bytes & 0xF000 ? 8u : 0u);
}

struct Block {
  U8 first, second;
};

[[gnu::always_inline]] inline U8 decidedBlock(const Rounded& rounded, const Groups& groups, const ByteTaps* taps,
                                              std::size_t count) {
  if (rounded.doubtful) [[unlikely]]
    return exactBlock(rounded.bytes, groups, taps, count, doubtfulPixels(rounded.doubtful));
  return rounded.bytes;
}

template <int kDigits>
[[gnu::always_inline]] inline Block integerBlock(const Groups& groups, const ByteTaps* taps, std::size_t count,
                                                 const ByteWeights& weights) {
  FourSums<kDigits> first(taps, count), second(taps, count);
  addGroups(groups, taps, count, first, second);
  return {decidedBlock(first.rounded(weights), groups, taps, count),
          decidedBlock(second.rounded(weights), groups.ofSecondRows(), taps, count)};
}

[[gnu::noinline]] Block exactBlocks(const Groups& groups, const ByteTaps* taps, std::size_t count) {
  return {exactBlock(U8{}, groups, taps, count, 15), exactBlock(U8{}, groups.ofSecondRows(), taps, count, 15)};
}

template <int kLane>
[[gnu::always_inline]] inline __m128i laneOf(U8 v) {
#if QAV_KERNEL_LEVEL >= 2
  return _mm512_extracti32x4_epi32((__m512i)v, kLane % 4);
#else
  return _mm256_extracti128_si256((__m256i)v, kLane % 2);
#endif
}

// A four of pixels of up to two vectors of rows. A whole store of three-channel pixels writes four bytes too many,
// which the next overwrites.
template <int kChannels>
[[gnu::always_inline]] inline void storeBlock(Block block, std::size_t at, std::size_t pixels, std::size_t rowCount,
                                              std::uint8_t* const* out) {
  if (kChannels == 3) {
    const __m128i order = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    block = {shuffleLanes(block.first, order), shuffleLanes(block.second, order)};
  }
  const std::size_t begin = at * kChannels, left = (pixels - at) * kChannels;
  if (rowCount == kRows && left >= 16) [[likely]] {
    const auto storeRows = [=](U8 v, std::uint8_t* const* to) __attribute__((always_inline)) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to[0] + begin), laneOf<0>(v));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to[1] + begin), laneOf<1>(v));
      if constexpr (kRowsOfVector > 2) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to[2] + begin), laneOf<2>(v));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to[3] + begin), laneOf<3>(v));
      }
    };
    storeRows(block.first, out);
    storeRows(block.second, out + kRowsOfVector);
    return;
  }
  const std::size_t length = left < kBlock * kChannels ? left : kBlock * kChannels;
  std::uint8_t lanes[2 * kVectorBytes];
  store(lanes, block.first);
  store(lanes + kVectorBytes, block.second);
  for (std::size_t r = 0; r < rowCount; ++r) std::memcpy(out[r] + begin, lanes + 16 * r, length);
}

template <int kChannels>
[[gnu::always_inline]] inline void resampleFour(const Groups& groups, const ByteTaps* taps, std::size_t x,
                                                std::size_t count, const ByteWeights& weights, std::size_t rowCount,
                                                std::uint8_t* const* out) {
  const std::size_t here = count - x < kBlock ? count - x : kBlock;
  const Block block = taps[x].sum == ByteSum::ThreeDigits ? integerBlock<3>(groups, taps + x, here, weights)
                      : taps[x].sum == ByteSum::Ratio     ? integerBlock<2>(groups, taps + x, here, weights)
                      : taps[x].sum == ByteSum::OneDigit  ? integerBlock<1>(groups, taps + x, here, weights)
                                                          : exactBlocks(groups, taps + x, here);
  storeBlock<kChannels>(block, x, count, rowCount, out);
}

template <int kChannels>
void rowsOf(const SourceRows<std::uint8_t>& in, const ByteTaps* taps, const ByteWeights& weights,
            const RowStretch* stretches, std::size_t stretchCount, std::uint8_t* const* out, std::uint8_t* scratch) {
  const std::size_t count = stretches[stretchCount - 1].end;
  Fetching next(in.first + in.ahead, in.ahead, count / kBlock + 1);
  for (std::size_t s = 0; s < stretchCount; ++s) {
    const RowStretch& stretch = stretches[s];
    gatherGroups<kChannels>(in, stretch, scratch);
    const Groups groups = {scratch, static_cast<std::int32_t>(stretch.source * kRowsOfVector)};
    for (std::size_t x = stretch.first; x < stretch.end; x += kBlock) {
      resampleFour<kChannels>(groups, taps, x, count, weights, in.count, out);
      next.portion();
    }
  }
}

#else

constexpr int kDigitBits = 7;
constexpr std::size_t kRows = 1;
constexpr RowStretchShape kShape = {1, 1, 1, 0};

template <int kChannels>
void rowsOf(const SourceRows<std::uint8_t>& in, const ByteTaps* taps, const ByteWeights&, const RowStretch* stretches,
            std::size_t stretchCount, std::uint8_t* const* out, std::uint8_t*) {
  for (std::size_t x = 0; x < stretches[stretchCount - 1].end; ++x) {
    double sums[4] = {};
    const std::uint8_t* from = in.first + static_cast<std::size_t>(taps[x].left) * kChannels;
    for (std::int32_t t = 0; t < taps[x].count; ++t, from += kChannels)
      for (std::size_t c = 0; c < kChannels; ++c) sums[c] += static_cast<double>(from[c]) * taps[x].weights[t];
    std::uint8_t rounded[4];
    storeRounded(rounded, F64{sums[0], sums[1]});
    storeRounded(rounded + 2, F64{sums[2], sums[3]});
    std::memcpy(out[0] + x * kChannels, rounded, kChannels);
  }
}

#endif

void rows(const SourceRows<std::uint8_t>& in, const ByteTaps* taps, const ByteWeights& weights,
          const RowStretch* stretches, std::size_t stretchCount, std::uint8_t* const* out, std::uint8_t* scratch) {
  if (in.channels == 4)
    rowsOf<4>(in, taps, weights, stretches, stretchCount, out, scratch);
  else
    rowsOf<3>(in, taps, weights, stretches, stretchCount, out, scratch);
}

}  // namespace

extern const ByteResamplingKernels byteResampling;
const ByteResamplingKernels byteResampling = {kRows, kDigitBits, kShape, &rows, &columns};

#include "RegionEnd.h"
