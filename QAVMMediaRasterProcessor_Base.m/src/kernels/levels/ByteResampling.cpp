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
#include "ByteColumns.h"
#if QAV_KERNEL_LEVEL >= 1
#include "ByteRuns.h"
#endif

namespace {

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

// Four pixels are summed together where there are enough registers; and only sums of one digit would wait for the bytes
// that a pair shares.
template <ByteSum kSum>
[[gnu::always_inline]] inline void addGroups(const Groups& groups, const ByteTaps* taps, FourSums<kSum>& first,
                                             FourSums<kSum>& second) {
  constexpr bool kTogether = digitsOf(kSum) == 1 || QAV_KERNEL_LEVEL >= 2;
  if (!kTogether || taps->shape == FourShape::Uneven) {
    addPixel(groups, taps[0], first.s0, second.s0);
    addPixel(groups, taps[1], first.s1, second.s1);
    addPixel(groups, taps[2], first.s2, second.s2);
    addPixel(groups, taps[3], first.s3, second.s3);
  } else if (digitsOf(kSum) == 1 && taps->shape == FourShape::Paired) {
    addFour<true>(groups, taps, first, second);
  } else {
    addFour<false>(groups, taps, first, second);
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

template <ByteSum kSum>
[[gnu::always_inline]] inline Block integerBlock(const Groups& groups, const ByteTaps* taps,
                                                 const ByteWeights& weights) {
  FourSums<kSum> first(taps), second(taps);
  addGroups(groups, taps, first, second);
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
  if (kChannels == 3) block = {withoutGaps(block.first), withoutGaps(block.second)};
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
  const ByteRowPlan& plan;
  Groups groups;
  std::size_t end;
  std::size_t rowCount;
  std::uint8_t* const* out;
};

// The fours from x on that have sums of one kind; returns where they end.
template <int kChannels, ByteSum kSum>
[[gnu::noinline]] std::size_t resampleAlike(const Fours& fours, std::size_t x, Fetching& next) {
  const auto [plan, groups, end, rowCount, out] = fours;
  const ByteTaps* const taps = plan.taps;
  const ByteWeights weights = plan.weights;
  Fetching ahead = next;
  do {
    Block block;
    if constexpr (kSum == ByteSum::Exact)
      block = exactBlocks(groups, taps + x);
    else
      block = integerBlock<kSum>(groups, taps + x, weights);
    storeBlock<kChannels>(block, x, plan.width, rowCount, out);
    ahead.portion();
    x += kBlock;
  } while (x < end && taps[x].sum == kSum);
  next = ahead;
  return x;
}

template <int kChannels>
std::size_t resampleSome(const Fours& fours, std::size_t x, Fetching& next) {
  using enum ByteSum;
  const ByteSum sum = fours.plan.taps[x].sum;
  return sum == OneDigit      ? resampleAlike<kChannels, OneDigit>(fours, x, next)
         : sum == Parts       ? resampleAlike<kChannels, Parts>(fours, x, next)
         : sum == Ratio       ? resampleAlike<kChannels, Ratio>(fours, x, next)
         : sum == ThreeDigits ? resampleAlike<kChannels, ThreeDigits>(fours, x, next)
                              : resampleAlike<kChannels, Exact>(fours, x, next);
}

template <int kChannels>
void resampleStretch(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan, const RowStretch& stretch,
                     std::uint8_t* const* out, std::uint8_t* scratch, Fetching& next) {
  gatherGroups<kChannels>(in, stretch, scratch);
  const Groups groups = {scratch, static_cast<std::int32_t>(stretch.source * kRowsOfVector)};
  const Fours fours = {plan, groups, stretch.end, in.count, out};
  for (std::size_t x = stretch.first; x < stretch.end;) x = resampleSome<kChannels>(fours, x, next);
}

// About as many as parts of the work, which are small against the memory to be fetched.
std::size_t portionsOf(std::size_t rowCount, const ByteRowPlan& plan) {
  const std::size_t steps = (plan.run.end - plan.run.first) / kRunPositions;
  return (rowCount + kRowsOfRun - 1) / kRowsOfRun * steps + (plan.width - steps * kRunPositions) / kBlock + 1;
}

// From left to right: what a stretch writes too much, and the positions that one has in common with the run, are
// written again.
template <int kChannels>
void rowsOf(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan, std::uint8_t* const* out,
            std::uint8_t* scratch) {
  Fetching next(in.first + in.ahead, in.ahead, portionsOf(in.count, plan));
  std::size_t s = 0;
  for (; s < plan.stretchCount && plan.stretches[s].first < plan.run.first; ++s)
    resampleStretch<kChannels>(in, plan, plan.stretches[s], out, scratch, next);
  if (plan.run.first < plan.run.end) resampleRun<kChannels>(in, plan, out, next);
  for (; s < plan.stretchCount; ++s) resampleStretch<kChannels>(in, plan, plan.stretches[s], out, scratch, next);
}

#else

constexpr int kDigitBits = 7;
constexpr int kDigitsOfRuns = 0;
constexpr std::size_t kRows = 1;
constexpr RowStretchShape kShape = {1, 1, 1, 0};

template <int kChannels>
void rowsOf(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan, std::uint8_t* const* out, std::uint8_t*) {
  const ByteTaps* const taps = plan.taps;
  for (std::size_t x = 0; x < plan.width; ++x) {
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

void rows(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan, std::uint8_t* const* out,
          std::uint8_t* scratch) {
  if (in.channels == 4)
    rowsOf<4>(in, plan, out, scratch);
  else
    rowsOf<3>(in, plan, out, scratch);
}

}  // namespace

extern const ByteResamplingKernels byteResampling;
const ByteResamplingKernels byteResampling = {kRows, kDigitBits, kDigitsOfRuns, kShape, &rows, &columns};

#include "RegionEnd.h"
