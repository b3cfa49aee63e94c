#include "Luma.h"

#include <cstring>

namespace {

// All numbers up to the sum are whole and have less than 24 bits, so they are exact. The factor is a little less than a
// ten-thousandth, by less than what rounding makes good again in whole quotients: all are those of integers.
[[gnu::always_inline]] inline std::uint8_t roundedLuma(unsigned red, unsigned green, unsigned blue) {
  const auto sample = [](unsigned value) { return static_cast<float>(static_cast<int>(value)); };
  const float sum = sample(red) * 2126.0f + sample(green) * 7152.0f + (sample(blue) * 722.0f + 5000.0f);
  return static_cast<std::uint8_t>(static_cast<int>(sum * 1e-4f));
}

template <int channels>
[[gnu::always_inline]] inline void convert(const std::uint8_t* __restrict from, std::size_t count,
                                           std::uint8_t* __restrict to) {
  for (std::size_t i = 0; i < count; ++i, from += channels) {
    if constexpr (channels == 4) {
      std::uint32_t pixel;  // one load, for the vectors that the compiler makes of this
      std::memcpy(&pixel, from, 4);
      if constexpr (__BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__) pixel = __builtin_bswap32(pixel);
      to[i] = roundedLuma(pixel & 255, pixel >> 8 & 255, pixel >> 16 & 255);
    } else {
      to[i] = roundedLuma(from[0], from[1], from[2]);
    }
  }
}

using Conversion = void (*)(const std::uint8_t* from, std::size_t count, std::uint8_t* to);

template <int channels>
void convertPlainly(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
  convert<channels>(from, count, to);
}

#if defined(__x86_64__)
template <int channels>
[[gnu::target("avx2")]] void convertWithAvx2(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
  convert<channels>(from, count, to);
}

template <int channels>
[[gnu::target("avx512f,avx512bw,avx512dq,avx512vl")]] void convertWithAvx512(const std::uint8_t* from,
                                                                             std::size_t count, std::uint8_t* to) {
  convert<channels>(from, count, to);
}
#endif

template <int channels>
Conversion best() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl"))
    return convertWithAvx512<channels>;
  if (__builtin_cpu_supports("avx2")) return convertWithAvx2<channels>;
#endif
  return convertPlainly<channels>;
}

}  // namespace

void lumaOfPixels(const std::uint8_t* pixels, std::size_t count, int channels, std::uint8_t* luminance) noexcept {
  static const Conversion ofThree = best<3>(), ofFour = best<4>();
  (channels == 3 ? ofThree : ofFour)(pixels, count, luminance);
}
