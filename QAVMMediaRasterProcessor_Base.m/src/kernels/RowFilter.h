#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// A 3x3 filter of bytes that works its way down an image in place.
///
/// Every row is first combined across: each sample with its neighbours `stride` samples to the left and right, where
/// the first and last pixel (of `stride` samples) are repeated outward. What the filter keeps of that, its partials,
/// is all that it needs of a row, so the row itself may be overwritten: a result comes from the partials of three rows.
/// Partials are kept in whole vectors; partialBytes() says how much room a row's need.
struct RowFilter {
  std::size_t bytesPerSample;  ///< of partials
  /// Combines `row` across.
  void (*prepare)(const std::uint8_t* row, std::size_t count, std::size_t stride, std::uint8_t* partials);
  /// Combines the row below across into `partialsBelow` and writes the row of results in the same pass.
  /// `partialsBelow` may be the memory of `above`.
  void (*advance)(const std::uint8_t* rowBelow, std::size_t count, std::size_t stride, const std::uint8_t* above,
                  const std::uint8_t* current, std::uint8_t* partialsBelow, std::uint8_t* out);
  /// Writes the last row of results, to which the row itself stands below.
  void (*finish)(std::size_t count, const std::uint8_t* above, const std::uint8_t* current, std::uint8_t* out);

  std::size_t partialBytes(std::size_t count) const { return (count + 63) / 64 * 64 * bytesPerSample; }
};

}  // namespace qav::kernels
