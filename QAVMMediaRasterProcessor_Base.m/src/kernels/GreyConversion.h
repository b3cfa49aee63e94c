#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// (red R + green G + blue B) / whole, rounded down. No weight is above 8000, and their sum is not above `whole`, which
/// is 1000 or 10000.
struct GreyWeights {
  int red, green, blue, whole;
};

/// Bytes of luminance from `pixels` pixels of 3 (R, G, B) or 4 (R, G, B, ignored) bytes. `grey` lies apart from
/// `source`.
struct GreyConversionKernels {
  void (*weighted)(const std::uint8_t* source, std::size_t pixels, int channels, const GreyWeights& weights,
                   std::uint8_t* grey);
  /// The green byte.
  void (*green)(const std::uint8_t* source, std::size_t pixels, int channels, std::uint8_t* grey);
  /// A third of the sum, rounded down.
  void (*average)(const std::uint8_t* source, std::size_t pixels, int channels, std::uint8_t* grey);
  /// The mean of the largest and the smallest, rounded down.
  void (*lightness)(const std::uint8_t* source, std::size_t pixels, int channels, std::uint8_t* grey);
};

const GreyConversionKernels& greyConversionKernels() noexcept;

}  // namespace qav::kernels
