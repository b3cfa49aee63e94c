#pragma once

#include <cstdint>
#include <limits>

/// Conversions of floating-point values to integers that are defined for every value: they round toward zero,
/// saturate, and turn not-a-number into 0.
namespace qav {

template <class Float>
constexpr unsigned char byteFrom(Float v) noexcept {
  return v >= Float(256) ? 255 : v > Float(0) ? static_cast<unsigned char>(v) : 0;
}

template <class Float>
constexpr std::int32_t intFrom(Float v) noexcept {
  constexpr Float bound = Float(2147483648.0);
  if (v >= bound) return std::numeric_limits<std::int32_t>::max();
  if (v < -bound) return std::numeric_limits<std::int32_t>::min();
  return v == v ? static_cast<std::int32_t>(v) : 0;
}

}  // namespace qav
