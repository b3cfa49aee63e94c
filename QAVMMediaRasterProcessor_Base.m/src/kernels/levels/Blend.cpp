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

void blendRow(std::uint8_t* target, const std::uint8_t* source, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) blendPixel(target + 4 * i, source + 4 * i);
}

}  // namespace

extern const BlendKernels blend;
const BlendKernels blend = {&blendRow};

#include "RegionEnd.h"
