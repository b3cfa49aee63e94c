#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Crossings are held in arrays of a multiple of this many numbers, so that vectors fit.
inline constexpr std::size_t kCrossingPadding = 8;
constexpr std::size_t paddedCrossings(std::size_t count) noexcept {
  return (count + kCrossingPadding - 1) / kCrossingPadding * kCrossingPadding;
}

/// Filling runs of 4-byte pixels, at any alignment.
struct FillKernels {
  /// `count` pixels become `colour`.
  void (*fillSpan)(std::uint8_t* pixels, std::size_t count, std::uint32_t colour);
  /// Fills up to `rows` rows of a shape, the first at `pixels`. `x` holds the ascending places where `count` edges
  /// cross the row; the columns between the first two, the next two and so on become `colour`, unless they are the same
  /// column. From row to row each edge moves by its slope. Stops where the edges are out of order in the next row.
  /// Returns how many rows were filled; `x` has moved on as often. Spare numbers of `x` are infinite, of `slope` 0.
  std::size_t (*fillBetween)(std::uint8_t* pixels, std::int32_t width, std::size_t rows, double* x, const double* slope,
                             std::size_t count, std::uint32_t colour);
  /// Recolours the region of equal pixels around (x, y), connected along rows and columns; (x, y) must lie within
  /// width x height. Runs to be visited wait in a stack of 10000, and those that find it full are dropped.
  void (*floodFill)(std::uint8_t* pixels, std::int32_t width, std::int32_t height, std::int32_t x, std::int32_t y,
                    std::uint32_t colour);
};

const FillKernels& fillKernels() noexcept;

}  // namespace qav::kernels
