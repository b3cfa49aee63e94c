#include "kernels/ColourMedian.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

inline constexpr std::size_t kPixels = kLanes<U32>;

// Reads up to a vector of RGB pixels into lanes of red, green, blue and 0.
[[gnu::always_inline]] inline U32 loadPixels(const std::uint8_t* rgb, std::size_t count) {
#if QAV_KERNEL_LEVEL >= 2
  const __mmask64 bytes = (std::uint64_t{1} << (count < 16 ? 3 * count : 48)) - 1;
  const __m512i packed = _mm512_maskz_loadu_epi8(bytes, rgb);
  const __m512i groups = _mm512_setr_epi32(0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0);
  const __m128i spread = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
  return (U32)_mm512_shuffle_epi8(_mm512_permutexvar_epi32(groups, packed), _mm512_broadcast_i32x4(spread));
#else
  std::uint32_t pixels[kPixels] = {};
  for (std::size_t i = 0; i < kPixels && i < count; ++i)
    pixels[i] =
        rgb[3 * i] | static_cast<std::uint32_t>(rgb[3 * i + 1]) << 8 | static_cast<std::uint32_t>(rgb[3 * i + 2]) << 16;
  return load<U32>(pixels);
#endif
}

[[gnu::always_inline]] inline void storePixels(std::uint8_t* rgb, std::size_t count, U32 pixels) {
#if QAV_KERNEL_LEVEL >= 2
  const __mmask64 bytes = (std::uint64_t{1} << (count < 16 ? 3 * count : 48)) - 1;
  const __m128i squeeze = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  const __m512i groups = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15);
  const __m512i squeezed = _mm512_shuffle_epi8((__m512i)pixels, _mm512_broadcast_i32x4(squeeze));
  _mm512_mask_storeu_epi8(rgb, bytes, _mm512_permutexvar_epi32(groups, squeezed));
#else
  for (std::size_t i = 0; i < kPixels && i < count; ++i)
    for (std::size_t k = 0; k < 3; ++k) rgb[3 * i + k] = static_cast<std::uint8_t>(pixels[i] >> (8 * k));
#endif
}

// Repeats the first and the last pixel outward.
inline void extend(std::uint32_t* row, std::size_t count) {
  row[ColourRows::kLead - 1] = row[ColourRows::kLead];
  row[ColourRows::kLead + count] = row[ColourRows::kLead + count - 1];
}

void prepare(const std::uint8_t* rgb, std::size_t count, std::uint32_t* row) {
  const I16 redAndBlue = (I16)splat<U32>(2220 | 459 << 16), green = (I16)splat<U32>(7067);
  for (std::size_t i = 0; i < count; i += kPixels) {
    const U32 pixels = loadPixels(rgb + 3 * i, count - i);
    const U32 key = (U32)(multiplyAddPairs((I16)(pixels & splat<U32>(0xFF00FF)), redAndBlue) +
                          multiplyAddPairs((I16)((pixels >> 8) & splat<U32>(0xFF)), green));
    store(row + ColourRows::kLead + i, key << 8 | (pixels & splat<U32>(0xFF)));
  }
  extend(row, count);
}

struct Triple {
  I32 low, mid, high;
};

[[gnu::always_inline]] inline Triple sorted(I32 a, I32 b, I32 c) {
  const I32 low = min(a, b), high = max(a, b);
  return {min(low, c), max(low, min(high, c)), max(high, c)};
}

[[gnu::always_inline]] inline I32 middle(I32 a, I32 b, I32 c) { return max(min(a, b), min(max(a, b), c)); }

// The three records of every column in order.
void sortColumns(const std::uint32_t* const rows[3], std::size_t count, std::uint32_t* const columns[3]) {
  for (std::size_t i = ColourRows::kLead; i < ColourRows::kLead + count; i += kPixels) {
    const Triple column = sorted(load<I32>(rows[0] + i), load<I32>(rows[1] + i), load<I32>(rows[2] + i));
    store(columns[0] + i, column.low);
    store(columns[1] + i, column.mid);
    store(columns[2] + i, column.high);
  }
  for (std::size_t k = 0; k < 3; ++k) extend(columns[k], count);
}

// Medians of records, and a bit for every lane where another colour has its key. Key and red together determine the
// colour, so equal records are equal pixels.
struct Choice {
  U32 records;
  std::uint32_t ambiguous;
};

[[gnu::always_inline]] inline std::uint32_t lanesBelow(I32 v, std::int32_t limit) {
#if QAV_KERNEL_LEVEL >= 2
  return _mm512_cmplt_epi32_mask((__m512i)v, (__m512i)splat<I32>(limit));
#elif QAV_KERNEL_LEVEL == 1
  return static_cast<std::uint32_t>(_mm256_movemask_ps((__m256)(v < splat<I32>(limit))));
#elif defined(__x86_64__)
  return static_cast<std::uint32_t>(_mm_movemask_ps((__m128)(v < splat<I32>(limit))));
#else
  std::uint32_t lanes = 0;
  for (std::size_t i = 0; i < kPixels; ++i) lanes |= (v[i] < limit ? 1u : 0u) << i;
  return lanes;
#endif
}

// The bits in which two records differ as a number, less 1 and moved to the range of signed ones: that of equal records
// wraps around to the largest.
[[gnu::always_inline]] inline I32 difference(I32 a, I32 b) { return (I32)((U32)(a ^ b) + splat<U32>(0x7FFFFFFF)); }

[[gnu::always_inline]] inline Choice chooseMedian(const std::uint32_t* const columns[3], std::size_t x) {
  I32 v[3][3];
#pragma GCC unroll 3
  for (std::size_t k = 0; k < 3; ++k) {
    v[k][0] = load<I32>(columns[k] + x - 1);
    v[k][1] = load<I32>(columns[k] + x);
    v[k][2] = load<I32>(columns[k] + x + 1);
  }
  const I32 median = middle(max(max(v[0][0], v[0][1]), v[0][2]), middle(v[1][0], v[1][1], v[1][2]),
                            min(min(v[2][0], v[2][1]), v[2][2]));
  constexpr std::int32_t kOtherKey = INT32_MIN + 255;  // and above: only the lowest byte holds no key
  I32 least = difference(v[0][0], median);
#pragma GCC unroll 8
  for (std::size_t k = 1; k < 9; ++k) least = min(least, difference(v[k / 3][k % 3], median));
  return {(U32)median, lanesBelow(least, kOtherKey)};
}

// The colours of records. Of a key, red leaves 7067 G + 459 B = 459 (15 G + B) + 182 G. As 182 * 401 is 1 more than a
// multiple of 459, G / 459 is the fraction of 401 / 459 of that, for which 32 bits behind the point suffice. What green
// leaves is a multiple of 459, so modulo 256 the division is a multiplication by 459's inverse there.
[[gnu::always_inline]] inline U32 pixelsOf(U32 records) {
  constexpr std::uint32_t kFraction = (std::uint64_t{401} << 32) / 459 + 1, kHalf = (std::uint64_t{1} << 31) / 459;
  constexpr std::uint32_t kInverse = 227, kGreen = (256 - 7067 * kInverse % 256) % 256;
  static_assert(182 * 401 % 459 == 1 && kInverse * 459 % 256 == 1);
  const U32 red = records & splat<U32>(0xFF);
  const U32 rest = (records >> 8) - (U32)multiplyAddPairs((I16)red, (I16)splat<U32>(2220));
  const U32 fraction = rest * splat<U32>(kFraction) + splat<U32>(kHalf);
  const U32 green = (U32)mulhi((U16)fraction, (U16)splat<U32>(459u << 16));
  const U32 restAndGreen = (rest & splat<U32>(0xFFFF)) | green;
  const U32 blue = (U32)multiplyAddPairs((I16)restAndGreen, (I16)splat<U32>(kInverse | kGreen << 16));
  return red | green >> 8 | (blue << 16 & splat<U32>(0xFF0000));
}

std::uint32_t medianBySorting(const std::uint32_t* const rows[3], std::size_t x) {
  std::uint32_t records[9];
  for (std::size_t k = 0; k < 9; ++k) records[k] = rows[k / 3][x + k % 3 - 1];
  for (int gap = 3; gap > 0; --gap) {
    for (int i = gap; i < 9; ++i) {
      const std::uint32_t record = records[i];
      int j = i;
      for (; j >= gap && records[j - gap] >> 8 > record >> 8; j -= gap) records[j] = records[j - gap];
      records[j] = record;
    }
  }
  return records[4];
}

void median(const std::uint32_t* const rows[3], std::size_t count, std::uint32_t* const columns[3], std::uint8_t* rgb) {
  sortColumns(rows, count, columns);
  for (std::size_t x = 0; x < count; x += kPixels) {
    const std::size_t at = ColourRows::kLead + x;
    Choice choice = chooseMedian(columns, at);
    if (count - x < kPixels) choice.ambiguous &= (1u << (count - x)) - 1;
    for (std::uint32_t left = choice.ambiguous; left != 0; left &= left - 1) {
      const auto lane = static_cast<std::size_t>(__builtin_ctz(left));
      choice.records[lane] = medianBySorting(rows, at + lane);
    }
    storePixels(rgb + 3 * x, count - x, pixelsOf(choice.records));
  }
}

}  // namespace

extern const ColourMedianKernels colourMedian;
const ColourMedianKernels colourMedian = {&prepare, &median};

#include "RegionEnd.h"
