#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// The rows of an image, as the filters below go through them in vectors.
struct RowShape {
  /// For rows that follow one another from `first` on, `stride` samples a pixel.
  RowShape(const std::uint8_t* first, std::size_t samples, std::size_t pixelStride)
      : count(samples),
        stride(pixelStride),
        lead(samples % kAlignment == 0 ? reinterpret_cast<std::uintptr_t>(first) % kAlignment : 0) {}

  static constexpr std::size_t kAlignment = 64;

  std::size_t count;   ///< samples
  std::size_t stride;  ///< samples between a sample and its neighbour, 1 to 4
  std::size_t lead;    ///< samples that the first vector begins before a row, to align the others in memory
};

/// A 3x3 filter of bytes that works its way down an image in place.
///
/// Every row is first combined across: each sample with its neighbours to the left and right, where the first and last
/// pixel are repeated outward. What the filter keeps of that, its partials, is all that it needs of a row once its
/// result is made, so the row itself is overwritten: a result comes from the partials of three rows. Partials are kept
/// in whole vectors, at aligned addresses; partialBytes() says how much room a row's need.
struct RowFilter {
  std::size_t bytesPerSample;  ///< of partials
  /// Combines the first row across.
  void (*prepare)(const std::uint8_t* row, const RowShape& shape, std::uint8_t* partials);
  /// Combines the row below across into `partialsBelow` and in the same pass replaces the row at `out` by its result.
  /// `partialsBelow` may be the memory of `above`.
  void (*advance)(const std::uint8_t* rowBelow, const RowShape& shape, const std::uint8_t* above,
                  const std::uint8_t* current, std::uint8_t* partialsBelow, std::uint8_t* out);
  /// Replaces the last row by its result; the row itself stands below it.
  void (*finish)(const RowShape& shape, const std::uint8_t* above, const std::uint8_t* current, std::uint8_t* out);

  std::size_t partialBytes(const RowShape& shape) const {
    return (shape.lead + shape.count + RowShape::kAlignment - 1) / RowShape::kAlignment * RowShape::kAlignment *
           bytesPerSample;
  }
};

}  // namespace qav::kernels
