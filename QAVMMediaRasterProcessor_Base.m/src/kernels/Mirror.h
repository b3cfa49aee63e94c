#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Turning runs of pixels around, in place.
struct MirrorKernels {
  /// Reverses the order of `pixels` pixels of 1 to 4 bytes; the bytes of a pixel keep theirs.
  void (*reverse)(std::uint8_t* bytes, std::size_t pixels, int channels);
  /// Exchanges two runs of `count` bytes that lie apart.
  void (*exchange)(std::uint8_t* one, std::uint8_t* other, std::size_t count);
};

const MirrorKernels& mirrorKernels() noexcept;

}  // namespace qav::kernels
