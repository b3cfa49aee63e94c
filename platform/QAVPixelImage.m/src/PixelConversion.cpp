#include "PixelConversion.h"
#include "Luma.h"
#include "PixelLayout.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {

using Step = void (*)(const void* source, void* destination, std::size_t pixels);

template <class T>
constexpr T kOpaque = std::is_floating_point_v<T> ? T(1) : std::numeric_limits<T>::max();

// Rounds to the nearest integer in double, where the product and the sum are exact; maxima are written so that
// not-a-number becomes 0.
template <class To>
To scaledFromUnit(float value) {
  const double clamped = value > 0.0f ? std::min(value, 1.0f) : 0.0f;
  return static_cast<To>(static_cast<std::int32_t>(clamped * kOpaque<To> + 0.5));
}

std::uint8_t convertSample(std::uint16_t v, std::uint8_t) { return static_cast<std::uint8_t>((v + 128u) / 257u); }
std::uint8_t convertSample(float v, std::uint8_t) { return scaledFromUnit<std::uint8_t>(v); }
std::uint16_t convertSample(std::uint8_t v, std::uint16_t) { return static_cast<std::uint16_t>(v * 257u); }
std::uint16_t convertSample(float v, std::uint16_t) { return scaledFromUnit<std::uint16_t>(v); }
float convertSample(std::uint8_t v, float) { return static_cast<float>(v) / 255.0f; }
float convertSample(std::uint16_t v, float) { return static_cast<float>(v) / 65535.0f; }

template <class From, class To, int Channels>
void convertSamples(const void* source, void* destination, std::size_t pixels) {
  const auto* from = static_cast<const From*>(source);
  auto* to = static_cast<To*>(destination);
  for (std::size_t i = 0; i < pixels * Channels; ++i) to[i] = convertSample(from[i], To());
}

template <int From>
void takeLuma(const void* source, void* destination, std::size_t pixels) {
  lumaOfPixels(static_cast<const std::uint8_t*>(source), pixels, From, static_cast<std::uint8_t*>(destination));
}

template <class T, int From, int To>
void changeChannels(const void* source, void* destination, std::size_t pixels) {
  const auto* from = static_cast<const T*>(source);
  auto* to = static_cast<T*>(destination);
  for (std::size_t i = 0; i < pixels; ++i, from += From, to += To) {
    if constexpr (From >= 3 && To <= 2) {
      to[0] = luma(from[0], from[1], from[2]);
    } else {
      to[0] = from[0];
      if constexpr (To >= 3) {
        to[1] = from[From >= 3 ? 1 : 0];
        to[2] = from[From >= 3 ? 2 : 0];
      }
    }
    if constexpr (To % 2 == 0) to[To - 1] = From % 2 == 0 ? from[From - 1] : kOpaque<T>;
  }
}

constexpr Step kByteLayouts[4][4] = {
    {nullptr, changeChannels<std::uint8_t, 1, 2>, changeChannels<std::uint8_t, 1, 3>,
     changeChannels<std::uint8_t, 1, 4>},
    {changeChannels<std::uint8_t, 2, 1>, nullptr, changeChannels<std::uint8_t, 2, 3>,
     changeChannels<std::uint8_t, 2, 4>},
    {takeLuma<3>, changeChannels<std::uint8_t, 3, 2>, nullptr, changeChannels<std::uint8_t, 3, 4>},
    {takeLuma<4>, changeChannels<std::uint8_t, 4, 2>, changeChannels<std::uint8_t, 4, 3>, nullptr},
};

template <class T>
Step layoutStep(int from, int to) {
  if constexpr (std::is_same_v<T, std::uint8_t>) {
    return kByteLayouts[from - 1][to - 1];
  } else {
    if (from == to) return nullptr;
    return from == 3 ? changeChannels<T, 3, 4> : changeChannels<T, 4, 3>;
  }
}

Step layoutStep(int bytesPerChannel, int from, int to) {
  switch (bytesPerChannel) {
    case 1:
      return layoutStep<std::uint8_t>(from, to);
    case 2:
      return layoutStep<std::uint16_t>(from, to);
    default:
      return layoutStep<float>(from, to);
  }
}

template <int Channels>
Step sampleStep(int from, int to) {
  if (from == to) return nullptr;
  if (from == 1)
    return to == 2 ? convertSamples<std::uint8_t, std::uint16_t, Channels>
                   : convertSamples<std::uint8_t, float, Channels>;
  if (from == 2)
    return to == 1 ? convertSamples<std::uint16_t, std::uint8_t, Channels>
                   : convertSamples<std::uint16_t, float, Channels>;
  return to == 1 ? convertSamples<float, std::uint8_t, Channels> : convertSamples<float, std::uint16_t, Channels>;
}

struct Route {
  Step first = nullptr;
  Step second = nullptr;
};

// Channels change where the samples are smaller, so that the second step or the buffer between them moves less.
Route routeOf(PixelLayout from, PixelLayout to) {
  const bool widens = from.bytesPerChannel < to.bytesPerChannel;
  const int channels = widens ? to.channels : from.channels;
  const Step samples = channels == 4 ? sampleStep<4>(from.bytesPerChannel, to.bytesPerChannel)
                                     : sampleStep<3>(from.bytesPerChannel, to.bytesPerChannel);
  const Step layout = layoutStep(std::min(from.bytesPerChannel, to.bytesPerChannel), from.channels, to.channels);
  if (!samples) return {layout, nullptr};
  if (!layout) return {samples, nullptr};
  return widens ? Route{layout, samples} : Route{samples, layout};
}

}  // namespace

void convertPixels(QAVPixelImageFormat from, const void* source, QAVPixelImageFormat to, void* destination,
                   std::size_t pixels) {
  const PixelLayout in = pixelLayoutOf(from), out = pixelLayoutOf(to);
  const Route route = routeOf(in, out);
  const auto inBytes = static_cast<std::size_t>(in.bytesPerPixel());
  const auto outBytes = static_cast<std::size_t>(out.bytesPerPixel());
  if (!route.first) {
    if (pixels > 0) std::memcpy(destination, source, pixels * inBytes);
    return;
  }
  if (!route.second) return route.first(source, destination, pixels);
  constexpr std::size_t kBlock = 1024;
  alignas(16) unsigned char between[kBlock * 8];  // 16-bit RGBA is the largest that lies between two steps
  const auto* input = static_cast<const unsigned char*>(source);
  auto* output = static_cast<unsigned char*>(destination);
  for (std::size_t count; pixels > 0; pixels -= count, input += count * inBytes, output += count * outBytes) {
    count = std::min(pixels, kBlock);
    route.first(input, between, count);
    route.second(between, output, count);
  }
}
