#pragma once

#include "drawing/PlainPicture.h"
#include "support/GuardedBytes.h"
#include "support/Images.h"
#include "support/Levels.h"

#include <cstring>

namespace qav::test {

/// The same picture twice: in a guarded, misaligned buffer under a helper, and as a plain picture.
struct Drawing {
  Drawing(int width, int height, std::size_t misalignment, std::uint32_t colour)
      : buffer(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, misalignment),
        image(new QAVPixelImage(width, height, RGBA8888, buffer.data(), QAVDeallocatePixelsByCaller)),
        helper(*image),
        plain{width, height, std::vector<std::uint32_t>(buffer.size() / 4, colour)} {
    helper.Clear(colour);
  }

  /// Sets the same pixels in both.
  void set(const std::vector<std::uint32_t>& pixels) {
    plain.pixels = pixels;
    std::memcpy(buffer.data(), pixels.data(), buffer.size());
  }

  [[nodiscard]] ::testing::AssertionResult agrees() const {
    const auto bytes = buffer.bytes();
    for (std::size_t i = 0; i < plain.pixels.size(); ++i) {
      std::uint32_t pixel = 0;
      std::memcpy(&pixel, bytes.data() + 4 * i, 4);
      if (pixel != plain.pixels[i])
        return ::testing::AssertionFailure()
               << plain.width << " x " << plain.height << ": pixel (" << static_cast<std::int64_t>(i) % plain.width
               << ", " << static_cast<std::int64_t>(i) / plain.width << ") is " << std::hex << pixel << " instead of "
               << plain.pixels[i];
    }
    if (!buffer.guardsIntact()) return ::testing::AssertionFailure() << "drawn outside the picture";
    return ::testing::AssertionSuccess();
  }

  GuardedBytes buffer;
  Image image;
  QAVMMIHelperRGBA helper;
  PlainPicture plain;
};

/// A coordinate near 0..60, farther out, or anywhere in 32 bits.
inline int randomCoordinate(std::mt19937& random) {
  const unsigned kind = random() % 16;
  if (kind == 0) return static_cast<int>(random());
  if (kind == 1) return random() & 1 ? INT32_MAX : INT32_MIN;
  if (kind < 5) return below(4001, random) - 2000;
  return below(90, random) - 15;
}

}  // namespace qav::test
