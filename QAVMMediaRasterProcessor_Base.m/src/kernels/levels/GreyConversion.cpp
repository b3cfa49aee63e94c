#include "kernels/GreyConversion.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

#if QAV_KERNEL_LEVEL >= 1
// A vector of pixels of four bytes each; of pixels of three bytes the fourth is whatever follows.
template <int channels>
U8 loadPixels(const std::uint8_t* from) {
  if constexpr (channels == 4) return load<U8>(from);
#if QAV_KERNEL_LEVEL >= 2
  const __m512i groups = _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12),
                                                  (__m512i)load<U8>(from));
  const __m128i spread = _mm_setr_epi8(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12);
  return (U8)_mm512_shuffle_epi8(groups, _mm512_broadcast_i32x4(spread));
#else
  const __m128i spread = _mm_setr_epi8(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12);
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 12));
  return (U8)_mm256_shuffle_epi8(_mm256_set_m128i(high, low), _mm256_broadcastsi128_si256(spread));
#endif
}

// The sum of the products of a pixel's bytes and four signed weights. Neighbouring products must fit 16 bits together.
[[gnu::always_inline]] inline I32 dot(U8 pixels, I32 weights) {
#if QAV_KERNEL_LEVEL >= 3
  return (I32)_mm512_dpbusd_epi32(_mm512_setzero_si512(), (__m512i)pixels, (__m512i)weights);
#elif QAV_KERNEL_LEVEL == 2
  return multiplyAddPairs((I16)_mm512_maddubs_epi16((__m512i)pixels, (__m512i)weights), splat<I16>(1));
#else
  return multiplyAddPairs((I16)_mm256_maddubs_epi16((__m256i)pixels, (__m256i)weights), splat<I16>(1));
#endif
}

I32 weightBytes(int red, int green, int blue) {
  return splat<I32>((red & 255) | (green & 255) << 8 | (blue & 255) << 16);
}
#endif

// Each formula for one pixel, and for a vector of pixels with the result in 32 bits.

struct Weighted {
  explicit Weighted(const GreyWeights& w) : weights(w) {
#if QAV_KERNEL_LEVEL >= 1
    const int r = lowDigit(w.red), g = lowDigit(w.green), b = lowDigit(w.blue);
    low = weightBytes(r, g, b);
    high = weightBytes((w.red - r) / 128, (w.green - g) / 128, (w.blue - b) / 128);
    scale = splat<F32>(1.0f / static_cast<float>(w.whole));
#endif
  }
  int operator()(int r, int g, int b) const {
    return (weights.red * r + weights.green * g + weights.blue * b) / weights.whole;
  }
  GreyWeights weights;
#if QAV_KERNEL_LEVEL >= 1
  // Weights as two signed digits of base 128. The product with the reciprocal truncates to the quotient for every sum
  // that 255s of these weights reach.
  static int lowDigit(int weight) { return ((weight + 64) & 127) - 64; }
  [[gnu::always_inline]] I32 operator()(U8 pixels) const {
    return truncate(toFloat((dot(pixels, high) << 7) + dot(pixels, low)) * scale);
  }
  I32 low, high;
  F32 scale;
#endif
};

struct Green {
  int operator()(int, int g, int) const { return g; }
#if QAV_KERNEL_LEVEL >= 1
  [[gnu::always_inline]] I32 operator()(U8 pixels) const { return ((I32)pixels >> 8) & 255; }
#endif
};

struct Average {
  int operator()(int r, int g, int b) const { return (r + g + b) / 3; }
#if QAV_KERNEL_LEVEL >= 1
  [[gnu::always_inline]] I32 operator()(U8 pixels) const {
    return multiplyAddPairs((I16)dot(pixels, weightBytes(1, 1, 1)), (I16)splat<I32>(21846)) >> 16;
  }
#endif
};

struct Lightness {
  int operator()(int r, int g, int b) const {
    const int low = r < g ? (r < b ? r : b) : (g < b ? g : b);
    const int high = r > g ? (r > b ? r : b) : (g > b ? g : b);
    return (low + high) / 2;
  }
#if QAV_KERNEL_LEVEL >= 1
  [[gnu::always_inline]] I32 operator()(U8 pixels) const {
    const U8 g = (U8)((U32)pixels >> 8), b = (U8)((U32)pixels >> 16);
    const U8 low = min(pixels, min(g, b)), high = max(pixels, max(g, b));
    return (I32)(average(low, high) - ((low ^ high) & 1)) & 255;
  }
#endif
};

template <int channels, class Formula>
void convertPixels(const std::uint8_t* source, std::size_t pixels, const Formula& formula, std::uint8_t* grey) {
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 1
  // A vector is read for three-byte pixels too, though fewer of its bytes are used.
  constexpr std::size_t reach = (kVectorBytes + channels - 1) / channels;
  for (; i + reach <= pixels; i += kLanes<I32>) {
    prefetchPageAhead(source + i * channels);
    storeNarrowed(grey + i, formula(loadPixels<channels>(source + i * channels)));
  }
#endif
  for (; i < pixels; ++i) {
    const std::uint8_t* p = source + i * channels;
    grey[i] = static_cast<std::uint8_t>(formula(p[0], p[1], p[2]));
  }
}

template <class Formula>
void convert(const std::uint8_t* source, std::size_t pixels, int channels, const Formula& formula, std::uint8_t* grey) {
  if (channels == 3)
    convertPixels<3>(source, pixels, formula, grey);
  else
    convertPixels<4>(source, pixels, formula, grey);
}

void weighted(const std::uint8_t* source, std::size_t pixels, int channels, const GreyWeights& weights,
              std::uint8_t* grey) {
  convert(source, pixels, channels, Weighted(weights), grey);
}

template <class Formula>
void simple(const std::uint8_t* source, std::size_t pixels, int channels, std::uint8_t* grey) {
  convert(source, pixels, channels, Formula(), grey);
}

}  // namespace

extern const GreyConversionKernels greyConversion;
const GreyConversionKernels greyConversion = {&weighted, &simple<Green>, &simple<Average>, &simple<Lightness>};

#include "RegionEnd.h"
