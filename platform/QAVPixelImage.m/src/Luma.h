#pragma once

#include <cstddef>
#include <cstdint>

/// (2126 R + 7152 G + 722 B) / 10000, rounded to the nearest integer.
constexpr std::uint8_t luma(unsigned red, unsigned green, unsigned blue) noexcept {
  return static_cast<std::uint8_t>((2126 * red + 7152 * green + 722 * blue + 5000) / 10000);
}

/// The luma of pixels of three or four bytes.
void lumaOfPixels(const std::uint8_t* pixels, std::size_t count, int channels, std::uint8_t* luminance) noexcept;
