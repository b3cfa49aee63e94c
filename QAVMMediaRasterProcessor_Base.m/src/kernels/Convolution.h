#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// How a channel's sum becomes a byte: the quotient by `divisor` in single precision, truncated and clamped to 0..255,
/// not-a-number as 0.
struct ConvolutionQuotient {
  enum Way : std::int32_t {
    Multiply,  ///< sum * reciprocal truncates to the same byte for every sum there can be
    Refine,    ///< sum * reciprocal + sum * rest does, rounded only after the second product and after the sum
    Divide,
    Words,  ///< for weights of bytes: the sum clamped to 16 unsigned bits, times `factor`, without the low 16 + `shift`
            ///< bits, does
  };
  Way way;
  float divisor;
  float reciprocal;
  float rest;  ///< what the reciprocal lacks, of the same sign; not 0 if it is to be used
  std::uint16_t factor;
  std::uint16_t shift;
};

/// What is known of quotients whose weights were rounded to whole numbers: the sum of the kernel's products with these,
/// begun at ConvolutionRows::start, is 2^`shift` times a number not above the quotient, and not below it with `width`
/// added. Where the two differ in the byte they become, the quotient is computed.
struct ConvolutionBound {
  std::int32_t width;
  std::int32_t shift;
  /// No result is above `most`. Where it is 255, only samples that all are 255 have the sum `full`.
  std::uint8_t most;
  std::int32_t full;
  const float* weights;  ///< all rows of the kernel, to compute with
  std::ptrdiff_t taps;   ///< of a row
  /// The results where all samples under the kernel are equal, by their value.
  const std::uint8_t* flat;
  std::size_t* recomputed;  ///< counts the samples that were looked at again
};

/// One row of results of a convolution of RGBA samples, or three neighbouring ones if the kernel has at least three.
/// Sums and weights stand in lanes of 32 bits; a lane of weights holds those of one or more taps.
struct ConvolutionRows {
  static constexpr int kMostResults = 3;
  /// Samples that are readable beyond those that the taps of the last sample need.
  static constexpr std::size_t kSlack = 128;

  const std::uint8_t* const* rows;  ///< source rows from top to bottom; sample i's first tap is sample i of its row
  std::ptrdiff_t rowCount;
  const std::uint32_t* weights;  ///< all rows of the kernel, lane by lane, a lane's digits from the lowest
  std::ptrdiff_t weightRows;
  std::size_t weightStride;       ///< lanes of a row of the kernel
  std::ptrdiff_t firstWeightRow;  ///< that weighs the first source row for the first result; each next one is one less
  int results;                    ///< 1 or kMostResults
  std::uint8_t* const* out;
  std::size_t count;  ///< samples of a row
  ConvolutionQuotient quotient;
  std::int32_t start;             ///< what whole sums begin at
  const ConvolutionBound* bound;  ///< null where the quotient is that of the sum
};

/// One way to hold taps in lanes.
struct ConvolutionArithmetic {
  int tapsPerLane;          ///< lane i holds the samples i, i + 4, i + 8 ...; 0 when this level does not have it
  int digits;               ///< lanes that together hold the weights, as signed digits to the base 256
  int boundedFrom;          ///< taps of a row with which ConvolutionRows::bound is worth while; 0 if it is not heeded
  std::size_t sampleBytes;  ///< of the rows: 4 when they hold lanes, 1 when lanes are made of them while summing
  /// Lanes from bytes, which are readable for 64 bytes behind the last sample. A lane's first byte is its first sample
  /// unless it is a float. Null when rows hold bytes.
  void (*widen)(const std::uint8_t* bytes, std::size_t count, std::uint8_t* lanes);
  void (*convolve)(const ConvolutionRows& rows);
};

/// Taps are summed in the kernel's order, a product and a sum at a time.
struct ConvolutionKernels {
  /// The largest weights, of either sign, that words and bytes take.
  static constexpr int kMostWord = 32639;
  static constexpr int kMostByte = 127;

  ConvolutionArithmetic floats;  ///< single precision, every product and sum rounded
  ConvolutionArithmetic words;   ///< whole weights of 16 bits
  ConvolutionArithmetic bytes;   ///< whole weights of 8 bits
};

const ConvolutionKernels& convolutionKernels() noexcept;

}  // namespace qav::kernels
