#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Mixing RGBA pixels by the source's alpha, in which 255 keeps the target.
struct BlendKernels {
  /// Red, green and blue of `count` target pixels become s + (t - s) * (alpha / 255) in single precision, rounded
  /// toward zero; the target's alpha stays. Source and target may overlap: every pixel is read after the ones before it
  /// were written.
  void (*blendRow)(std::uint8_t* target, const std::uint8_t* source, std::size_t count);
};

const BlendKernels& blendKernels() noexcept;

}  // namespace qav::kernels
