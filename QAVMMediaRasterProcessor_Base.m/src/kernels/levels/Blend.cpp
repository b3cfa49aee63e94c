#include "kernels/Blend.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

void blendPixel(std::uint8_t* target, const std::uint8_t* source) {
  std::uint8_t s[4], t[3];
  std::memcpy(s, source, 4);
  std::memcpy(t, target, 3);
  const float weight = static_cast<float>(s[3]) / 255.0f;
  for (int k = 0; k < 3; ++k) {
    const auto from = static_cast<float>(s[k]);
    // Lies within 0..255: the weight is at most 1, and rounding cannot leave the range of exact ends.
    t[k] = static_cast<std::uint8_t>(from + (static_cast<float>(t[k]) - from) * weight);
  }
  std::memcpy(target, t, 3);
}

#if QAV_KERNEL_LEVEL >= 1

// A vector of pixels by the formula itself.
[[gnu::noinline]] U32 blendInFloat(U32 target, U32 source) {
  const F32 weight = toFloat((I32)(source >> 24)) / splat<F32>(255.0f);
  U32 result = target & splat<U32>(0xFF000000u);
#pragma GCC unroll 3
  for (int shift = 0; shift < 24; shift += 8) {
    const F32 s = toFloat((I32)(source >> shift & splat<U32>(255)));
    const F32 t = toFloat((I32)(target >> shift & splat<U32>(255)));
    result |= (U32)truncate(s + (t - s) * weight) << shift;
  }
  return result;
}

// Each pixel's alpha, in both of its 16-bit lanes.
[[gnu::always_inline]] inline U16 alphas(U32 pixels) {
#if QAV_KERNEL_LEVEL >= 2
  const __m512i order = _mm512_set4_epi32(static_cast<int>(0x800F800Fu), static_cast<int>(0x800B800Bu),
                                          static_cast<int>(0x80078007u), static_cast<int>(0x80038003u));
  return (U16)_mm512_shuffle_epi8((__m512i)pixels, order);
#else
  const U32 alpha = pixels >> 24;
  return (U16)(alpha | alpha << 16);
#endif
}

// Every other channel of a vector of pixels, as 16-bit lanes: red and blue, or green and alpha.
struct Channels {
  U16 source;
  U16 target;

  // 128 times the quotient of (s * (255 - a) + t * a) / 255, and something in the low 7 bits unless that is whole.
  [[gnu::always_inline]] U16 mixed(U16 weight) const {
    return mulhi(source * (weight ^ splat<U16>(255)) + target * weight, splat<U16>(0x8081));
  }
};

// Single precision falls short of a whole quotient, and gives one less, for some weights from 129 to 165 and targets
// below the source. Tells whether that may happen.
[[gnu::always_inline]] inline bool mayFallShort(Channels even, U16 evenMixed, Channels odd, U16 oddMixed, U16 weight) {
  const U16 distance = weight - splat<U16>(129);
  const U16 fraction = splat<U16>(127);
#if QAV_KERNEL_LEVEL >= 2
  const __mmask32 suspects = _mm512_cmple_epu16_mask((__m512i)distance, _mm512_set1_epi16(165 - 129));
  if (suspects == 0) return false;
  const auto wholeBelow = [&](__mmask32 lanes, Channels c, U16 mixed) {
    const __mmask32 below = _mm512_mask_cmplt_epu16_mask(lanes, (__m512i)c.target, (__m512i)c.source);
    return _mm512_mask_testn_epi16_mask(below, (__m512i)mixed, (__m512i)fraction);
  };
  return (wholeBelow(suspects, even, evenMixed) | wholeBelow(suspects & 0x55555555u, odd, oddMixed)) != 0;
#else
  const auto wholeBelow = [&](Channels c, U16 mixed) {
    return (U16)((mixed & fraction) == 0) & (U16)((I16)c.source > (I16)c.target);
  };
  const U16 green = (U16)splat<U32>(0xFFFF);
  const U16 found = wholeBelow(even, evenMixed) | (wholeBelow(odd, oddMixed) & green);
  return !_mm256_testz_si256((__m256i)(min(distance, splat<U16>(165 - 129)) == distance), (__m256i)found);
#endif
}

[[gnu::always_inline]] inline U32 blendVector(U32 target, U32 source) {
  const U16 byte = splat<U16>(255);
  const Channels even = {(U16)source & byte, (U16)target & byte}, odd = {(U16)source >> 8, (U16)target >> 8};
  const U16 weight = alphas(source);
  const U16 evenMixed = even.mixed(weight), oddMixed = odd.mixed(weight);
  if (__builtin_expect(mayFallShort(even, evenMixed, odd, oddMixed, weight), 0)) return blendInFloat(target, source);
  return (U32)(evenMixed >> 7) | ((U32)(oddMixed << 1) & splat<U32>(0xFF00)) | (target & splat<U32>(0xFF000000u));
}

#endif

void blendRow(std::uint8_t* target, const std::uint8_t* source, std::size_t count) {
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 1
  // Pixels that were written before are read again only when the source lies before the target.
  const auto from = reinterpret_cast<std::uintptr_t>(source), to = reinterpret_cast<std::uintptr_t>(target);
  if (from >= to || from + 4 * count <= to) {
    for (; i + kLanes<U32> <= count; i += kLanes<U32>)
      store(target + 4 * i, blendVector(load<U32>(target + 4 * i), load<U32>(source + 4 * i)));
  }
#endif
  for (; i < count; ++i) blendPixel(target + 4 * i, source + 4 * i);
}

}  // namespace

extern const BlendKernels blend;
const BlendKernels blend = {&blendRow};

#include "RegionEnd.h"
