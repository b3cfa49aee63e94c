#pragma once

#include "kernels/RowStretch.h"

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// How the sum of one output position is taken. The first two take it in integers: a weight is a number of quanta of
/// 2^-shift, written in signed digits, and every digit is multiplied with four samples at once.
enum class ByteSum : std::int32_t {
  Exact,        ///< in double, as it is defined
  OneDigit,     ///< the quanta are the weights exactly, and small: the integer sum is the result
  ThreeDigits,  ///< the integer sum is within a bound of the true one; where it is too close to call, Exact decides
};

/// The weights of one output position: weights[k] belongs to source position left + k.
struct ByteTaps {
  const double* weights = nullptr;
  std::int32_t left = 0;
  std::int32_t count = 0;  ///< none for 0: the result is 0
  ByteSum sum = ByteSum::Exact;
  std::int32_t bias = 0;        ///< starts the sum of quanta: a half, what centres the error, and the bound on it
  std::int32_t firstGroup = 0;  ///< the first of the groups of four source positions that `digits` counts from
  std::int32_t groups = 0;
  const std::int32_t* digits = nullptr;  ///< for each group, one or three times the digits of four taps
};

struct ByteWeights {
  int shift[3] = {};        ///< of each ByteSum
  std::uint32_t doubt = 0;  ///< a sum whose fraction, as 32 bits, is below this is too close to call
};

struct ByteRows {
  const std::uint8_t* const* rows;
  std::size_t count;   ///< 1 to rowsAtOnce
  std::size_t pixels;  ///< of each row
  int channels;        ///< 3 or 4
};

/// Weighted sums of bytes, rounded half up and limited to 0..255; every result as if taken in double in the order of
/// the taps.
struct ByteResamplingKernels {
  std::size_t rowsAtOnce;
  /// Weights are written in digits of so many bits, the first of them no larger than a number of that size with a sign.
  int digitBits;
  /// Scratch memory in bytes.
  RowStretchShape stretches;
  /// Resamples rows to the positions of at least one stretch. Groups of taps begin at multiples of four; positions are
  /// computed in fours, each four with one kind of sum.
  void (*rows)(const ByteRows& in, const ByteTaps* taps, const ByteWeights& weights, const RowStretch* stretches,
               std::size_t stretchCount, std::uint8_t* const* out, std::uint8_t* scratch);
  /// One output row: the weighted sum of rows, of which there are as many as taps, and at least four for each group.
  void (*columns)(const std::uint8_t* const* rows, std::size_t samples, const ByteTaps& taps,
                  const ByteWeights& weights, std::uint8_t* out);
};

const ByteResamplingKernels& byteResamplingKernels() noexcept;

}  // namespace qav::kernels
