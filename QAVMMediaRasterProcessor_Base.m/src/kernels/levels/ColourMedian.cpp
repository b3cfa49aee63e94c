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

void prepare(const std::uint8_t* rgb, std::size_t count, const ColourRow& row) {
  const I16 redAndBlue = (I16)splat<U32>(2220 | 459 << 16), green = (I16)splat<U32>(7067);
  for (std::size_t i = 0; i < count; i += kPixels) {
    const U32 pixels = loadPixels(rgb + 3 * i, count - i);
    const U32 key = (U32)(multiplyAddPairs((I16)(pixels & splat<U32>(0xFF00FF)), redAndBlue) +
                          multiplyAddPairs((I16)((pixels >> 8) & splat<U32>(0xFF)), green));
    store(row.pixels + 1 + i, pixels);
    store(row.keys + 1 + i, key << 8 | (pixels & splat<U32>(0xFF)));
  }
  row.pixels[0] = row.pixels[1];
  row.keys[0] = row.keys[1];
  row.pixels[count + 1] = row.pixels[count];
  row.keys[count + 1] = row.keys[count];
}

struct Triple {
  U32 low, mid, high;
};

[[gnu::always_inline]] inline Triple sorted(U32 a, U32 b, U32 c) {
  const U32 low = min(a, b), high = max(a, b);
  return {min(low, c), max(low, min(high, c)), max(high, c)};
}

[[gnu::always_inline]] inline U32 middle(U32 a, U32 b, U32 c) { return max(min(a, b), min(max(a, b), c)); }

[[gnu::always_inline]] inline U32 medianOf(const U32* v) {
  const Triple a = sorted(v[0], v[1], v[2]), b = sorted(v[3], v[4], v[5]), c = sorted(v[6], v[7], v[8]);
  return middle(max(max(a.low, b.low), c.low), middle(a.mid, b.mid, c.mid), min(min(a.high, b.high), c.high));
}

// The pixels of the lanes whose records equal the median, and a bit for every lane where another colour has its key.
// Key and red together determine the colour, so equal records are equal pixels.
struct Choice {
  U32 pixels;
  std::uint32_t ambiguous;
};

[[gnu::always_inline]] inline Choice chooseMedian(const ColourRow* const rows[3], std::size_t x) {
  U32 v[9];
#pragma GCC unroll 9
  for (std::size_t k = 0; k < 9; ++k) v[k] = load<U32>(rows[k / 3]->keys + x + k % 3);
  const U32 median = medianOf(v);
  Choice choice{};
#if QAV_KERNEL_LEVEL >= 2
  __mmask16 ambiguous = 0;
#pragma GCC unroll 9
  for (std::size_t k = 0; k < 9; ++k) {
    const __mmask16 equal = _mm512_cmpeq_epi32_mask((__m512i)v[k], (__m512i)median);
    choice.pixels = (U32)_mm512_mask_loadu_epi32((__m512i)choice.pixels, equal, rows[k / 3]->pixels + x + k % 3);
    const U32 others = (v[k] ^ median) - splat<U32>(1);
    ambiguous = static_cast<__mmask16>(ambiguous | _mm512_cmplt_epu32_mask((__m512i)others, (__m512i)splat<U32>(255)));
  }
  choice.ambiguous = ambiguous;
#else
  I32 ambiguous{};
#pragma GCC unroll 9
  for (std::size_t k = 0; k < 9; ++k) {
    const I32 equal = (I32)(v[k] == median);
    choice.pixels |= load<U32>(rows[k / 3]->pixels + x + k % 3) & (U32)equal;
    ambiguous |= (I32)((I32)(v[k] ^ median) < splat<I32>(256)) & ~equal;
  }
  for (std::size_t i = 0; i < kLanes<I32>; ++i) choice.ambiguous |= (ambiguous[i] ? 1u : 0u) << i;
#endif
  return choice;
}

std::uint32_t medianBySorting(const ColourRow* const rows[3], std::size_t x) {
  std::uint32_t keys[9], pixels[9];
  for (std::size_t k = 0; k < 9; ++k) {
    keys[k] = rows[k / 3]->keys[x + k % 3] >> 8;
    pixels[k] = rows[k / 3]->pixels[x + k % 3];
  }
  for (int gap = 3; gap > 0; --gap) {
    for (int i = gap; i < 9; ++i) {
      const std::uint32_t key = keys[i], pixel = pixels[i];
      int j = i;
      for (; j >= gap && keys[j - gap] > key; j -= gap) {
        keys[j] = keys[j - gap];
        pixels[j] = pixels[j - gap];
      }
      keys[j] = key;
      pixels[j] = pixel;
    }
  }
  return pixels[4];
}

void median(const ColourRow* const rows[3], std::size_t count, std::uint8_t* rgb) {
  for (std::size_t x = 0; x < count; x += kPixels) {
    const Choice choice = chooseMedian(rows, x);
    U32 pixels = choice.pixels;
    std::uint32_t ambiguous = choice.ambiguous;
    if (count - x < kPixels) ambiguous &= (1u << (count - x)) - 1;
    for (; ambiguous != 0; ambiguous &= ambiguous - 1) {
      const auto lane = static_cast<std::size_t>(__builtin_ctz(ambiguous));
      pixels[lane] = medianBySorting(rows, x + lane);
    }
    storePixels(rgb + 3 * x, count - x, pixels);
  }
}

}  // namespace

extern const ColourMedianKernels colourMedian;
const ColourMedianKernels colourMedian = {&prepare, &median};

#include "RegionEnd.h"
