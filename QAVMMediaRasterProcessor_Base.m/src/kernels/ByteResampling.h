#pragma once

#include "kernels/RowStretch.h"
#include "kernels/SourceRows.h"

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// How the sum of one output position is taken. A weight is written in some digits, each of which is multiplied with
/// four samples at once.
enum class ByteSum : std::int32_t {
  Exact,     ///< in double, as it is defined
  OneDigit,  ///< weights are small whole numbers of quanta of 2^-shift: the integer sum is the result
  Parts,     ///< weights are nearly whole numbers of an odd number of parts of one, which leave no sum near a half: the
             ///< sum of twice the parts, divided, is the result
  Ratio,     ///< weights are whole numbers of parts of one and a tiny excess, which decides exact halves; where the
             ///< sum of excesses is too small for that, Exact does
  ThreeDigits,  ///< weights are nearly whole numbers of quanta of 2^-shift: the integer sum is within a bound of the
                ///< true one; where it is too close to call, Exact decides
};
inline constexpr std::size_t kByteSums = 5;

constexpr int digitsOf(ByteSum sum) {
  return sum == ByteSum::Exact ? 0 : sum == ByteSum::ThreeDigits ? 3 : sum == ByteSum::Ratio ? 2 : 1;
}

/// How four positions that are summed together lie.
enum class FourShape : std::int32_t {
  Uneven,
  Even,   ///< all look at as many groups, at least at one
  Paired  ///< even, and the first two look at the same groups, and so do the other two
};

/// The weights of one output position: weights[k] belongs to source position left + k.
struct ByteTaps {
  const double* weights = nullptr;
  std::int32_t left = 0;
  std::int32_t count = 0;  ///< none for 0: the result is 0
  ByteSum sum = ByteSum::Exact;
  std::int32_t bias = 0;         ///< starts the sum: a half, in quanta also what centres the error and the bound on it
  std::int32_t excessBias = 0;   ///< of a Ratio: starts the sum of excesses
  std::int32_t excessBound = 0;  ///< of a Ratio: a sum of excesses within it, either way, does not decide
  std::int32_t firstGroup = 0;   ///< the first of the groups of four source positions that `digits` counts from
  std::int32_t groups = 0;
  FourShape shape = FourShape::Uneven;   ///< for `rows`, of the four that begin with this one
  const std::int32_t* digits = nullptr;  ///< for each group, the digits of four taps, the highest digits first; for
                                         ///< `rows` those of four positions side by side
};

struct ByteWeights {
  int shift[kByteSums] = {};    ///< of a OneDigit, of a ThreeDigits
  std::uint32_t doubt = 0;      ///< a sum whose fraction, as 32 bits, is below this is too close to call
  std::int32_t divisor = 0;     ///< of Parts and a Ratio: two times the parts
  std::int32_t reciprocal = 0;  ///< n / divisor is n * reciprocal >> (16 + reciprocalShift)
  std::int32_t reciprocalShift = 0;
};

/// Positions whose weights return: each has those of the one `period` before, and looks at sources `step` further on.
struct ByteRun {
  static constexpr std::size_t kPositions = 16, kLongestPeriod = 4, kLongestStep = 4;

  std::size_t first = 0;
  std::size_t end = 0;                       ///< a multiple of kPositions behind the first
  std::size_t period = 0;                    ///< 1, 2 or 4
  std::int32_t step = 0;                     ///< 1 to kLongestStep
  std::int32_t begins[kLongestPeriod] = {};  ///< where the sources of the first positions begin, by groups of four
  std::int32_t groups = 0;                   ///< the most of any
  bool paired = false;                       ///< the period is 2 and both its positions begin at the same source
  const std::int32_t* digits = nullptr;      ///< for each group, those of the positions of a period side by side
};

/// How rows are resampled to `width` positions.
struct ByteRowPlan {
  const ByteTaps* taps = nullptr;  ///< for whole fours; each four has one kind of sum
  std::size_t width = 0;
  ByteWeights weights;
  ByteRun run;                            ///< has sums of one kind, which is neither Exact nor Ratio; 64 bytes of a row
                                          ///< can be read at every group of the first lane of a vector
  const RowStretch* stretches = nullptr;  ///< of all other positions
  std::size_t stretchCount = 0;
};

/// Weighted sums of bytes, rounded half up and limited to 0..255; every result as if taken in double in the order of
/// the taps.
struct ByteResamplingKernels {
  std::size_t rowsAtOnce;  ///< the most that `rows` takes
  /// Weights are written in digits of so many bits, the first of them no larger than a number of that size with a sign.
  int digitBits;
  /// Runs of sums of more digits are no faster than other positions.
  int digitsOfRuns;
  /// Scratch memory in bytes.
  RowStretchShape stretches;
  void (*rows)(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan, std::uint8_t* const* out,
               std::uint8_t* scratch);
  /// Samples first to end - 1 of one output row: the weighted sum of rows, of which there are as many as taps, and at
  /// least four for each group.
  void (*columns)(const std::uint8_t* const* rows, std::size_t first, std::size_t end, const ByteTaps& taps,
                  const ByteWeights& weights, std::uint8_t* out);
};

const ByteResamplingKernels& byteResamplingKernels() noexcept;

}  // namespace qav::kernels
