#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// What the median of colours keeps of one row of RGB pixels: one entry before the first pixel and one behind the last
/// repeat them, and whole vectors may be read beyond that.
struct ColourRow {
  std::uint32_t* keys;    ///< (2220 R + 7067 G + 459 B) * 256 + R
  std::uint32_t* pixels;  ///< R + 256 G + 65536 B

  static constexpr std::size_t entries(std::size_t pixelCount) { return pixelCount + 2 + 32; }
};

/// The colour that stands fifth when the nine of a neighbourhood, gathered row by row, are sorted by their key
/// 2220 R + 7067 G + 459 B with a Shell sort of gaps 3, 2, 1 that moves only on strictly greater keys. The order among
/// equal keys is that sort's own.
struct ColourMedianKernels {
  void (*prepare)(const std::uint8_t* rgb, std::size_t count, const ColourRow& row);
  /// `rows` are those above, at and below the row of results.
  void (*median)(const ColourRow* const rows[3], std::size_t count, std::uint8_t* rgb);
};

const ColourMedianKernels& colourMedianKernels() noexcept;

}  // namespace qav::kernels
