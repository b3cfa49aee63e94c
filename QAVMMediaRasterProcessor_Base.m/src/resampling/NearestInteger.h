#pragma once

#include <bit>
#include <cstdint>

namespace qav {

/// The integer nearest to a magnitude below 2^31, found by pushing everything else out of the significand.
struct NearestInteger {
  explicit NearestInteger(double v) : pushed(v + kIntegersOnly) {}
  double value() const { return pushed - kIntegersOnly; }
  std::int32_t integer() const { return static_cast<std::int32_t>(std::bit_cast<std::uint64_t>(pushed)); }

  static constexpr double kIntegersOnly = 1.5 * 4503599627370496.0;
  double pushed;
};

}  // namespace qav
