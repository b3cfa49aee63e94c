#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Error diffusion whose weights follow each pixel's own value, rows by turns from left to right and from right to
/// left; every pixel becomes 255 or 0. `sums` holds width + 2 zeros.
///
/// A pixel of 0 or 255 uses the weights of the pixel before it. Until the first pixel of another value there is no
/// error to weigh, so it makes no difference which weights a call starts with.
void diffuseVariably(std::uint8_t* pixels, std::size_t width, std::size_t height, std::uint32_t* sums) noexcept;

}  // namespace qav::kernels
