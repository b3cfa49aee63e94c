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
[[gnu::always_inline]] inline U32 blendInFloat(U32 target, U32 source) {
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

// 128 times the quotient of (s * (255 - a) + t * a) / 255, and a fraction below it.
[[gnu::always_inline]] inline U16 mixed(U16 source, U16 target, U16 weight) {
  return mulhi(source * (weight ^ splat<U16>(255)) + target * weight, splat<U16>(0x8081));
}

// The same in integers, for weights of which isExact is true.
[[gnu::always_inline]] inline U32 blendInIntegers(U32 target, U32 source, U16 weight) {
  const U16 byte = splat<U16>(255);
  const U16 redAndBlue = mixed((U16)source & byte, (U16)target & byte, weight) >> 7;
  const U16 green = mixed((U16)source >> 8, (U16)target >> 8, weight) << 1;
  return (U32)redAndBlue | ((U32)green & splat<U32>(0xFF00)) | (target & splat<U32>(0xFF000000u));
}

// With some weights from 129 to 165 single precision falls short of a whole quotient and gives one less.
[[gnu::always_inline]] inline bool isExact(U16 weight) {
  const U16 distance = weight - splat<U16>(129);
#if QAV_KERNEL_LEVEL >= 2
  return _mm512_cmple_epu16_mask((__m512i)distance, _mm512_set1_epi16(165 - 129)) == 0;
#else
  return signBits((U8)(min(distance, splat<U16>(165 - 129)) == distance)) == 0;
#endif
}

[[gnu::always_inline]] inline U32 blendVector(U32 target, U32 source) {
  const U16 weight = alphas(source);
  return isExact(weight) ? blendInIntegers(target, source, weight) : blendInFloat(target, source);
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
