#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// `result` takes the colour of `source` and its alpha weakened by `mask`; all are RGBA.
struct MaskAlphaKernels {
  /// Alpha times (mask alpha / 255) times (mask luminance / 255), in double precision, rounded toward zero. The
  /// luminance is (0.2125 R + 0.7154 G) + 0.0721 B.
  void (*byLuminance)(const std::uint8_t* source, const std::uint8_t* mask, std::size_t pixels, std::uint8_t* result);
  /// Alpha where the mask's alpha is not 0, else 0.
  void (*byAlpha)(const std::uint8_t* source, const std::uint8_t* mask, std::size_t pixels, std::uint8_t* result);
};

const MaskAlphaKernels& maskAlphaKernels() noexcept;

}  // namespace qav::kernels
