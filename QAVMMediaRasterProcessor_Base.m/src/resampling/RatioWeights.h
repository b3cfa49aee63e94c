#pragma once

#include "kernels/ByteResampling.h"

#include <cstdint>
#include <optional>
#include <span>

namespace qav {

/// Divides numbers of 16 bits by multiplying: n / divisor is (n * reciprocal) >> (16 + shift) for all n whose quotient
/// is below 256, and no less than 255 for all others.
struct Reciprocal {
  std::int32_t divisor = 0;
  std::int32_t reciprocal = 0;
  std::int32_t shift = 0;
};
/// None where a reciprocal of 16 bits is not exact enough.
std::optional<Reciprocal> reciprocalOf(std::int32_t divisor);

/// Weights as whole numbers of parts and what they exceed them by, in quanta of their own.
struct Ratio {
  double quantum = 0.0;    ///< 0: by nothing
  std::int32_t bound = 0;  ///< a sum of excesses that is larger, in either direction, decides exact halves
};

/// None where the weights are too far from so many parts of one, or a digit would be larger than `largestDigit`.
std::optional<Ratio> ratioOf(const kernels::ByteTaps& taps, std::int32_t parts, double largestDigit);

/// The two digits of a weight: twice its parts, and its excess.
struct RatioDigits {
  std::int8_t parts;
  std::int8_t excess;
};
RatioDigits ratioDigits(double weight, std::int32_t parts, const Ratio& ratio);

/// The least number of parts for which all of these positions have a ratio that decides most exact halves, of which
/// there are none where it is odd; 0 where there is no such number or no reciprocal to divide by.
std::int32_t commonParts(std::span<const kernels::ByteTaps> taps, double largestDigit);

}  // namespace qav
