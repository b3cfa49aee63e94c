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

// The sums of as many columns as a vector has bytes.
template <ByteSum kSum>
struct ColumnSums {
  Sum<kSum> s0, s1, s2, s3;

  [[gnu::always_inline]] explicit ColumnSums(const ByteTaps& taps) : s0(taps), s1(taps), s2(taps), s3(taps) {}
  [[gnu::always_inline]] void add(const std::uint8_t* const* rows, std::size_t at, const std::int32_t* digits) {
    U8 bytes[4];
    interleaveRows(rows, at, bytes);
    s0.add(bytes[0], digits);
    s1.add(bytes[1], digits);
    s2.add(bytes[2], digits);
    s3.add(bytes[3], digits);
  }
  [[gnu::always_inline]] void finish(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                     const ByteWeights& weights, std::uint8_t* out) const {
    const Rounded rounded = roundedSums(s0, s1, s2, s3, weights);
    store(out + at, rounded.bytes);
    if (rounded.doubtful) [[unlikely]]
      decideColumns(rows, at, taps, rounded, out);
  }
};

// A vector of columns, or two.
template <ByteSum kSum, bool kTwo>
[[gnu::always_inline]] inline void integerColumns(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                                  const ByteWeights& weights, std::uint8_t* out) {
  ColumnSums<kSum> first(taps), second(taps);
  for (std::int32_t g = 0; g < taps.groups; ++g) {
    const std::int32_t* const digits = taps.digits + g * digitsOf(kSum);
    first.add(rows + 4 * g, at, digits);
    if constexpr (kTwo) second.add(rows + 4 * g, at + kVectorBytes, digits);
  }
  first.finish(rows, at, taps, weights, out);
  if constexpr (kTwo) second.finish(rows, at + kVectorBytes, taps, weights, out);
}

#endif

// Calls block for vectors of columns from `at` on; those from `first` on are done.
template <class Block>
[[gnu::always_inline]] inline void overColumns(const std::uint8_t* const* rows, std::size_t first, std::size_t at,
                                               std::size_t end, const ByteTaps& taps, std::uint8_t* out, Block block) {
  for (; at + kVectorBytes <= end; at += kVectorBytes) block(at);
  // The last columns lie in a block that begins among those already done.
  if (at < end && end - first >= kVectorBytes)
    block(end - kVectorBytes);
  else
    for (; at < end; ++at) out[at] = exactSample(rows, at, taps);
}

#if QAV_KERNEL_LEVEL >= 1
template <ByteSum kSum>
void columnsOf(const std::uint8_t* const* rows, std::size_t first, std::size_t end, const ByteTaps& taps,
               const ByteWeights& weights, std::uint8_t* out) {
  std::size_t at = first;
  // Sums of one digit leave registers for two vectors.
  if constexpr (digitsOf(kSum) == 1)
    for (; at + 2 * kVectorBytes <= end; at += 2 * kVectorBytes)
      integerColumns<kSum, true>(rows, at, taps, weights, out);
  overColumns(rows, first, at, end, taps, out,
              [&](std::size_t block) { integerColumns<kSum, false>(rows, block, taps, weights, out); });
}
#endif

void columns(const std::uint8_t* const* rows, std::size_t first, std::size_t end, const ByteTaps& taps,
             [[maybe_unused]] const ByteWeights& weights, std::uint8_t* out) {
#if QAV_KERNEL_LEVEL >= 1
  using enum ByteSum;
  if (taps.sum == OneDigit) return columnsOf<OneDigit>(rows, first, end, taps, weights, out);
  if (taps.sum == Parts) return columnsOf<Parts>(rows, first, end, taps, weights, out);
  if (taps.sum == Ratio) return columnsOf<Ratio>(rows, first, end, taps, weights, out);
  if (taps.sum == ThreeDigits) return columnsOf<ThreeDigits>(rows, first, end, taps, weights, out);
#endif
  overColumns(rows, first, first, end, taps, out,
              [&](std::size_t at) { exactColumns<kVectorBytes>(rows, at, taps, out); });
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
[[gnu::noinline]] U8 exactBlock(U8 block, const Groups& groups, const ByteTaps* taps, unsigned which) {
  for (std::size_t p = 0; p < kBlock; ++p)
    if (which >> p & 1u) block = withPixels(block, p, exactPixel(groups, taps[p]));
  return block;
}

// The sums of a four of pixels in one vector of rows.
template <ByteSum kSum>
struct FourSums {
  Sum<kSum> s0, s1, s2, s3;

  [[gnu::always_inline]] explicit FourSums(const ByteTaps* taps) : s0(taps[0]), s1(taps[1]), s2(taps[2]), s3(taps[3]) {}
  [[gnu::always_inline]] Rounded rounded(const ByteWeights& weights) const {
    return roundedSums(s0, s1, s2, s3, weights);
  }
};

// Adds a group of both vectors of rows to the sums of a pixel, or of the next one, too, which looks at the same.
template <bool kForTwo, ByteSum kSum>
[[gnu::always_inline]] inline void addGroup(const std::uint8_t* from, const std::int32_t* digits, Sum<kSum>& first,
                                            Sum<kSum>& second, Sum<kSum>& nextFirst, Sum<kSum>& nextSecond) {
  U8 bytes = load<U8>(from), others = load<U8>(from + kVectorBytes);
#if QAV_KERNEL_LEVEL >= 3
  // Keeps the compiler from reading the same bytes again for every digit.
  __asm__("" : "+v"(bytes), "+v"(others));
#endif
  first.add(bytes, digits);
  second.add(others, digits);
  if constexpr (kForTwo) {
    nextFirst.add(bytes, digits + digitsOf(kSum));
    nextSecond.add(others, digits + digitsOf(kSum));
  }
}

// The digits of four pixels stand side by side.
template <ByteSum kSum>
inline constexpr std::size_t kBetweenGroups = kBlock* digitsOf(kSum);

// All groups of one pixel.
template <ByteSum kSum>
[[gnu::always_inline]] inline void addPixel(const Groups& groups, const ByteTaps& taps, Sum<kSum>& first,
                                            Sum<kSum>& second) {
  const std::int32_t* digits = taps.digits;
  for (std::int32_t g = 0; g < taps.groups; ++g, digits += kBetweenGroups<kSum>)
    addGroup<false>(groups.at(taps.firstGroup + g), digits, first, second, first, second);
}

// Four pixels of as many groups, or of pairs that look at the same.
template <bool kPaired, ByteSum kSum>
[[gnu::always_inline]] inline void addFour(const Groups& groups, const ByteTaps* taps, FourSums<kSum>& first,
                                           FourSums<kSum>& second) {
  const std::uint8_t *const p0 = groups.at(taps[0].firstGroup), *const p1 = groups.at(taps[1].firstGroup),
                            *const p2 = groups.at(taps[2].firstGroup), *const p3 = groups.at(taps[3].firstGroup);
  constexpr int kDigits = digitsOf(kSum);
  const std::int32_t* digits = taps[0].digits;
  const std::size_t end = static_cast<std::size_t>(taps[0].groups) * kGroupBytes;
  for (std::size_t at = 0; at < end; at += kGroupBytes, digits += kBetweenGroups<kSum>) {
    addGroup<kPaired>(p0 + at, digits, first.s0, second.s0, first.s1, second.s1);
    if (!kPaired) addGroup<false>(p1 + at, digits + kDigits, first.s1, second.s1, first.s1, second.s1);
    addGroup<kPaired>(p2 + at, digits + 2 * kDigits, first.s2, second.s2, first.s3, second.s3);
    if (!kPaired) addGroup<false>(p3 + at, digits + 3 * kDigits, first.s3, second.s3, first.s3, second.s3);
  }
}

template <ByteSum kSum, FourShape kShape>
[[gnu::always_inline]] inline void addGroups(const Groups& groups, const ByteTaps* taps, FourSums<kSum>& first,
                                             FourSums<kSum>& second) {
  if constexpr (kShape == FourShape::Uneven) {
    addPixel(groups, taps[0], first.s0, second.s0);
    addPixel(groups, taps[1], first.s1, second.s1);
    addPixel(groups, taps[2], first.s2, second.s2);
    addPixel(groups, taps[3], first.s3, second.s3);
  } else {
    addFour<kShape == FourShape::Paired>(groups, taps, first, second);
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

[[gnu::always_inline]] inline U8 decidedBlock(const Rounded& rounded, const Groups& groups, const ByteTaps* taps) {
  if (rounded.doubtful) [[unlikely]]
    return exactBlock(rounded.bytes, groups, taps, doubtfulPixels(rounded.doubtful));
  return rounded.bytes;
}

template <ByteSum kSum, FourShape kShape>
[[gnu::always_inline]] inline Block integerBlock(const Groups& groups, const ByteTaps* taps,
                                                 const ByteWeights& weights) {
  FourSums<kSum> first(taps), second(taps);
  addGroups<kSum, kShape>(groups, taps, first, second);
  return {decidedBlock(first.rounded(weights), groups, taps),
          decidedBlock(second.rounded(weights), groups.ofSecondRows(), taps)};
}

[[gnu::noinline]] Block exactBlocks(const Groups& groups, const ByteTaps* taps) {
  return {exactBlock(U8{}, groups, taps, 15), exactBlock(U8{}, groups.ofSecondRows(), taps, 15)};
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

// What the fours of a stretch share.
struct Fours {
  Groups groups;
  const ByteTaps* taps;
  std::size_t end;
  std::size_t width;
  std::size_t rowCount;
  std::uint8_t* const* out;
};

// Four pixels in two vectors of rows are summed together where there are enough registers; and only sums of one digit
// would wait for the bytes that a pair shares.
template <ByteSum kSum>
[[gnu::always_inline]] inline FourShape usefulShape(FourShape shape) {
  constexpr bool kTogether = digitsOf(kSum) == 1 || (digitsOf(kSum) > 1 && QAV_KERNEL_LEVEL >= 2);
  if (!kTogether || shape == FourShape::Uneven) return FourShape::Uneven;
  return digitsOf(kSum) == 1 ? shape : FourShape::Even;
}

// The fours from x on that are summed in one way; returns where they end.
template <int kChannels, ByteSum kSum, FourShape kShape>
[[gnu::noinline]] std::size_t resampleAlike(const Fours& fours, std::size_t x, ByteWeights weights, Fetching& next) {
  const auto [groups, taps, end, width, rowCount, out] = fours;
  Fetching ahead = next;
  do {
    Block block;
    if constexpr (kSum == ByteSum::Exact)
      block = exactBlocks(groups, taps + x);
    else
      block = integerBlock<kSum, kShape>(groups, taps + x, weights);
    storeBlock<kChannels>(block, x, width, rowCount, out);
    ahead.portion();
    x += kBlock;
  } while (x < end && taps[x].sum == kSum && usefulShape<kSum>(taps[x].shape) == kShape);
  next = ahead;
  return x;
}

template <int kChannels, ByteSum kSum>
std::size_t resampleInSum(const Fours& fours, std::size_t x, const ByteWeights& weights, Fetching& next) {
  using enum FourShape;
  const FourShape shape = usefulShape<kSum>(fours.taps[x].shape);
  if constexpr (digitsOf(kSum) == 1)
    if (shape == Paired) return resampleAlike<kChannels, kSum, Paired>(fours, x, weights, next);
  if constexpr (digitsOf(kSum) >= 1)
    if (shape == Even) return resampleAlike<kChannels, kSum, Even>(fours, x, weights, next);
  return resampleAlike<kChannels, kSum, Uneven>(fours, x, weights, next);
}

template <int kChannels>
std::size_t resampleSome(const Fours& fours, std::size_t x, const ByteWeights& weights, Fetching& next) {
  using enum ByteSum;
  const ByteSum sum = fours.taps[x].sum;
  return sum == OneDigit      ? resampleInSum<kChannels, OneDigit>(fours, x, weights, next)
         : sum == Parts       ? resampleInSum<kChannels, Parts>(fours, x, weights, next)
         : sum == Ratio       ? resampleInSum<kChannels, Ratio>(fours, x, weights, next)
         : sum == ThreeDigits ? resampleInSum<kChannels, ThreeDigits>(fours, x, weights, next)
                              : resampleInSum<kChannels, Exact>(fours, x, weights, next);
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
    const Fours fours = {groups, taps, stretch.end, count, in.count, out};
    for (std::size_t x = stretch.first; x < stretch.end;) x = resampleSome<kChannels>(fours, x, weights, next);
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
