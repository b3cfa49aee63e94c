#include "kernels/ColourMedian.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

void prepare(const std::uint8_t* rgb, std::size_t count, const ColourRow& row) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t r = rgb[3 * i], g = rgb[3 * i + 1], b = rgb[3 * i + 2];
    row.pixels[i + 1] = r | g << 8 | b << 16;
    row.keys[i + 1] = (2220 * r + 7067 * g + 459 * b) << 8 | r;
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

void writePixel(std::uint8_t* rgb, std::uint32_t pixel) {
  rgb[0] = static_cast<std::uint8_t>(pixel);
  rgb[1] = static_cast<std::uint8_t>(pixel >> 8);
  rgb[2] = static_cast<std::uint8_t>(pixel >> 16);
}

void median(const ColourRow* const rows[3], std::size_t count, std::uint8_t* rgb) {
  for (std::size_t x = 0; x < count; x += kLanes<U32>) {
    const Choice choice = chooseMedian(rows, x);
    std::uint32_t pixels[kLanes<U32>];
    std::memcpy(pixels, &choice.pixels, sizeof pixels);
    const std::size_t lanes = count - x < kLanes<U32> ? count - x : kLanes<U32>;
    for (std::size_t i = 0; i < lanes; ++i)
      writePixel(rgb + 3 * (x + i), (choice.ambiguous >> i & 1u) ? medianBySorting(rows, x + i) : pixels[i]);
  }
}

}  // namespace

extern const ColourMedianKernels colourMedian;
const ColourMedianKernels colourMedian = {&prepare, &median};

#include "RegionEnd.h"
