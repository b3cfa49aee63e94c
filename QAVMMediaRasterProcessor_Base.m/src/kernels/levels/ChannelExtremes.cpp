#include "kernels/ChannelExtremes.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

void scan(const std::uint8_t* bytes, std::size_t count, std::size_t channels, std::uint8_t* minima,
          std::uint8_t* maxima) {
  for (std::size_t i = 0, k = 0; i < count; ++i, k = k + 1 == channels ? 0 : k + 1) {
    if (bytes[i] > maxima[k])
      maxima[k] = bytes[i];
    else if (bytes[i] < minima[k])
      minima[k] = bytes[i];
  }
}

// Plain extremes of whole steps of `parts` vectors, a multiple of the pixel's size; returns how many bytes it took.
template <std::size_t parts>
std::size_t reduce(const std::uint8_t* bytes, std::size_t count, std::size_t channels, std::uint8_t* minima,
                   std::uint8_t* maxima) {
  constexpr std::size_t step = parts * kVectorBytes;
  if (count < step) return 0;
  U8 low[parts], high[parts];
  for (std::size_t v = 0; v < parts; ++v) low[v] = high[v] = load<U8>(bytes + v * kVectorBytes);
  std::size_t i = step;
  for (; i + step <= count; i += step) {
#pragma GCC unroll 4
    for (std::size_t v = 0; v < parts; ++v) {
      const U8 samples = load<U8>(bytes + i + v * kVectorBytes);
      low[v] = min(low[v], samples);
      high[v] = max(high[v], samples);
    }
  }
  for (std::size_t b = 0; b < step; ++b) {
    const std::uint8_t l = low[b / kVectorBytes][b % kVectorBytes], h = high[b / kVectorBytes][b % kVectorBytes];
    if (l < minima[b % channels]) minima[b % channels] = l;
    if (h > maxima[b % channels]) maxima[b % channels] = h;
  }
  return i;
}

void find(const std::uint8_t* bytes, std::size_t pixels, int channels, std::uint8_t* minima, std::uint8_t* maxima) {
  const auto stride = static_cast<std::size_t>(channels);
  for (std::size_t k = 0; k < stride; ++k) {
    minima[k] = 255;
    maxima[k] = 0;
  }
  // A channel can rise for 255 samples at most. After the first that did not, whatever raises the maximum lies above
  // the minimum anyway, so the plain extremes of the rest follow the rule.
  const std::size_t count = pixels * stride;
  const std::size_t start = pixels < 256 ? count : 256 * stride;
  scan(bytes, start, stride, minima, maxima);
  const std::size_t taken = channels == 3 ? reduce<3>(bytes + start, count - start, stride, minima, maxima)
                                          : reduce<4>(bytes + start, count - start, stride, minima, maxima);
  scan(bytes + start + taken, count - start - taken, stride, minima, maxima);
}

}  // namespace

extern const ChannelExtremesKernels channelExtremes;
const ChannelExtremesKernels channelExtremes = {&find};

#include "RegionEnd.h"
