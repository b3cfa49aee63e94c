#include "kernels/ChannelPlanes.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

#if QAV_KERNEL_LEVEL >= 1

// Shuffles of 16 bytes between three planes and pixels: byte i of the 48 belongs to plane i % 3.
struct Shuffle {
  std::int8_t at[16];
};

// Bytes 16 v to 16 v + 15 of sixteen pixels, from plane k; those of other planes are left out.
constexpr Shuffle interleaving(int v, int k) {
  Shuffle shuffle{};
  for (int i = 0; i < 16; ++i) shuffle.at[i] = static_cast<std::int8_t>((16 * v + i) % 3 == k ? (16 * v + i) / 3 : -1);
  return shuffle;
}

// Plane k of sixteen pixels, from their bytes 16 v to 16 v + 15.
constexpr Shuffle extracting(int v, int k) {
  Shuffle shuffle{};
  for (int i = 0; i < 16; ++i) shuffle.at[i] = static_cast<std::int8_t>((3 * i + k) / 16 == v ? (3 * i + k) % 16 : -1);
  return shuffle;
}

constexpr Shuffle kInterleave[3][3] = {{interleaving(0, 0), interleaving(0, 1), interleaving(0, 2)},
                                       {interleaving(1, 0), interleaving(1, 1), interleaving(1, 2)},
                                       {interleaving(2, 0), interleaving(2, 1), interleaving(2, 2)}};
constexpr Shuffle kExtract[3][3] = {{extracting(0, 0), extracting(1, 0), extracting(2, 0)},
                                    {extracting(0, 1), extracting(1, 1), extracting(2, 1)},
                                    {extracting(0, 2), extracting(1, 2), extracting(2, 2)}};

[[gnu::always_inline]] inline __m128i load16(const void* from) {
  return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

// Three vectors shuffled into one, every byte from one of them.
[[gnu::always_inline]] inline __m128i gather(__m128i a, __m128i b, __m128i c, const Shuffle (&shuffles)[3]) {
  return _mm_or_si128(
      _mm_or_si128(_mm_shuffle_epi8(a, load16(shuffles[0].at)), _mm_shuffle_epi8(b, load16(shuffles[1].at))),
      _mm_shuffle_epi8(c, load16(shuffles[2].at)));
}

std::size_t interleave3(const std::uint8_t* const* planes, std::size_t pixels, std::uint8_t* to) {
  std::size_t i = 0;
  for (; i + 16 <= pixels; i += 16)
    for (int v = 0; v < 3; ++v)
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 3 * i + 16 * static_cast<std::size_t>(v)),
                       gather(load16(planes[0] + i), load16(planes[1] + i), load16(planes[2] + i), kInterleave[v]));
  return i;
}

std::size_t interleave4(const std::uint8_t* const* planes, std::size_t pixels, std::uint8_t* to) {
  std::size_t i = 0;
  for (; i + 16 <= pixels; i += 16) {
    const __m128i a = load16(planes[0] + i), b = load16(planes[1] + i);
    const __m128i c = load16(planes[2] + i), d = load16(planes[3] + i);
    const __m128i abLow = _mm_unpacklo_epi8(a, b), abHigh = _mm_unpackhi_epi8(a, b);
    const __m128i cdLow = _mm_unpacklo_epi8(c, d), cdHigh = _mm_unpackhi_epi8(c, d);
    auto* const out = reinterpret_cast<__m128i*>(to + 4 * i);
    _mm_storeu_si128(out, _mm_unpacklo_epi16(abLow, cdLow));
    _mm_storeu_si128(out + 1, _mm_unpackhi_epi16(abLow, cdLow));
    _mm_storeu_si128(out + 2, _mm_unpacklo_epi16(abHigh, cdHigh));
    _mm_storeu_si128(out + 3, _mm_unpackhi_epi16(abHigh, cdHigh));
  }
  return i;
}

std::size_t extract3(const std::uint8_t* from, int channel, std::size_t pixels, std::uint8_t* plane) {
  std::size_t i = 0;
  for (; i + 16 <= pixels; i += 16) {
    const std::uint8_t* const at = from + 3 * i;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(plane + i),
                     gather(load16(at), load16(at + 16), load16(at + 32), kExtract[channel]));
  }
  return i;
}

std::size_t extract4(const std::uint8_t* from, int channel, std::size_t pixels, std::uint8_t* plane) {
  std::size_t i = 0;
  const auto byteAt = [&](std::size_t at) { return (I32)(load<U32>(from + at) >> (8 * channel) & splat<U32>(255)); };
  for (; i + kVectorBytes / 2 <= pixels; i += kVectorBytes / 2) {
    storeNarrowed(plane + i, byteAt(4 * i));
    storeNarrowed(plane + i + kVectorBytes / 4, byteAt(4 * i + kVectorBytes));
  }
  return i;
}

#endif

void interleave(const std::uint8_t* const* planes, int channels, std::size_t pixels, std::uint8_t* to) {
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 1
  i = channels == 3 ? interleave3(planes, pixels, to) : interleave4(planes, pixels, to);
#endif
  const auto stride = static_cast<std::size_t>(channels);
  for (; i < pixels; ++i)
    for (std::size_t k = 0; k < stride; ++k) to[stride * i + k] = planes[k][i];
}

void extract(const std::uint8_t* from, int channels, int channel, std::size_t pixels, std::uint8_t* plane) {
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 1
  i = channels == 3 ? extract3(from, channel, pixels, plane) : extract4(from, channel, pixels, plane);
#endif
  const auto stride = static_cast<std::size_t>(channels);
  for (; i < pixels; ++i) plane[i] = from[stride * i + static_cast<std::size_t>(channel)];
}

}  // namespace

extern const ChannelPlanesKernels channelPlanes;
const ChannelPlanesKernels channelPlanes = {&interleave, &extract};

#include "RegionEnd.h"
