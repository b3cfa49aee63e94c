#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qav {

/// The pixels that a primitive draws into, 4 bytes each. Either both sides are positive or both are 0, so that clipping
/// alone keeps drawing out of a canvas that has no pixels. Coordinates are 64-bit: sums of 32-bit ones hold.
struct Canvas {
  unsigned char* bytes = nullptr;
  std::int64_t width = 0;
  std::int64_t height = 0;

  bool contains(std::int64_t x, std::int64_t y) const { return x >= 0 && x < width && y >= 0 && y < height; }
  /// The pixel's address; adopted buffers may have any alignment.
  unsigned char* at(std::int64_t x, std::int64_t y) const { return bytes + 4 * (y * width + x); }
  void plot(std::int64_t x, std::int64_t y, std::uint32_t colour) const {
    if (contains(x, y)) std::memcpy(at(x, y), &colour, 4);
  }
};

}  // namespace qav
