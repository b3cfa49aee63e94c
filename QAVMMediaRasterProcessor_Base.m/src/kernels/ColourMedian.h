#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// The rows that the median of colours works with. They hold a record of a pixel each, (2220 R + 7067 G + 459 B) * 256
/// + R, from which the pixel can be told. The first and the last one are repeated outward, and whole vectors may be
/// read and written.
struct ColourRows {
  static constexpr std::size_t kLead = 16;  ///< entries before the first pixel, to align it
  static constexpr std::size_t entries(std::size_t pixelCount) { return (kLead + pixelCount + 1 + 31) / 16 * 16; }
};

/// The colour that stands fifth when the nine of a neighbourhood, gathered row by row, are sorted by their key
/// 2220 R + 7067 G + 459 B with a Shell sort of gaps 3, 2, 1 that moves only on strictly greater keys. The order among
/// equal keys is that sort's own.
struct ColourMedianKernels {
  void (*prepare)(const std::uint8_t* rgb, std::size_t count, std::uint32_t* row);
  /// `rows` are those above, at and below the row of results, `columns` three rows of working memory.
  void (*median)(const std::uint32_t* const rows[3], std::size_t count, std::uint32_t* const columns[3],
                 std::uint8_t* rgb);
};

const ColourMedianKernels& colourMedianKernels() noexcept;

}  // namespace qav::kernels
