#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Pairs of colours, one plane a channel. Kernels may fill lanes behind the last pair.
struct ColourPairs {
  static constexpr std::size_t kCapacity = 256;

  alignas(64) std::uint8_t rgb[2][3][kCapacity];
  alignas(64) double lab[2][3][kCapacity];
  alignas(64) double difference[kCapacity];
};

/// Colour differences in CIE Lab (D65) of many pixels at once. Every level gives the same bits: no step but plain
/// arithmetic and square roots, in one order.
struct ColourDifferenceKernels {
  /// Writes the numbers of those of `pixels` pixels of `stride` bytes (3 or more) whose first three bytes differ, in
  /// ascending order, to `positions`, and returns how many they are.
  std::size_t (*findDifferent)(const std::uint8_t* first, const std::uint8_t* second, std::size_t pixels,
                               std::size_t stride, std::uint32_t* positions);
  /// Whether the two colours differ in each of the first `count` pairs.
  bool (*allDiffer)(const ColourPairs& pairs, std::size_t count);
  /// Lab of both colours of the first `count` pairs: the bytes, taken for linear sRGB of full scale 255.
  void (*toLab)(ColourPairs& pairs, std::size_t count);
  /// CIEDE2000 with unit weights from the Lab values of the first `count` pairs, or -1 where the mean hue hangs on the
  /// last bits of the two hues: they lie opposite to one another, or their mean is 0 degrees.
  void (*deltaE2000)(ColourPairs& pairs, std::size_t count);
};

const ColourDifferenceKernels& colourDifferenceKernels() noexcept;

}  // namespace qav::kernels
