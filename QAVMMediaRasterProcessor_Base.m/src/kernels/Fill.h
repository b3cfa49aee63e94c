#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Filling runs of 4-byte pixels, at any alignment.
struct FillKernels {
  /// `count` pixels become `colour`.
  void (*fillSpan)(std::uint8_t* pixels, std::size_t count, std::uint32_t colour);
  /// Recolours the region of equal pixels around (x, y), connected along rows and columns; (x, y) must lie within
  /// width x height. Runs to be visited wait in a stack of 10000, and those that find it full are dropped.
  void (*floodFill)(std::uint8_t* pixels, std::int32_t width, std::int32_t height, std::int32_t x, std::int32_t y,
                    std::uint32_t colour);
};

const FillKernels& fillKernels() noexcept;

}  // namespace qav::kernels
