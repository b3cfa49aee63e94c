#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Numbers that error diffusion works with beside the pixels of an image `width` pixels wide.
constexpr std::size_t diffusionScratch(std::size_t width) noexcept { return 3 * (width + 512); }

/// Turning bytes of luminance into 0 and 255, in place.
struct DitheringKernels {
  using Diffusion = void (*)(std::uint8_t* pixels, std::size_t width, std::size_t height, std::int16_t* scratch);

  /// Error diffusion with fixed weights over rows from left to right. Sums are in whole parts of 1/16, 1/16, 1/48 and
  /// 1/42; a pixel becomes 255 from half of 256 on. `scratch` holds diffusionScratch(width) zeros.
  ///
  ///     diffuse[0]:    * 7      diffuse[1]:          * 8    diffuse[2]:      * 7 5    diffuse[3]:      * 8 4
  ///                  3 5 1                   1 1 2 4                     8 . 7 5 3                 6 . 8 4 2
  ///                                                                      4 . 5 3 1                 3 . 4 2 1
  ///
  /// In the last two the share of the column to the left below has moved one column further.
  Diffusion diffuse[4];
  /// Bytes above `level` become 255, all others 0.
  void (*threshold)(std::uint8_t* bytes, std::size_t count, std::uint8_t level);
};

const DitheringKernels& ditheringKernels() noexcept;

}  // namespace qav::kernels
