#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Samples behind those that a record may begin at: as many as one step looks at.
inline constexpr std::size_t kRunLengthLookahead = 320;
/// A buffer of records that holds this much takes no further record.
inline constexpr std::size_t kRunLengthFull = 896;
/// Bytes that a buffer of records needs: what one step may add, and whole vectors behind it.
inline constexpr std::size_t kRunLengthRoom = 1280;

/// Samples to be run-length encoded. kRunLengthLookahead of them stand behind `count`, with their bits. Where `end`
/// lies among those, the ones behind it must all be equal and differ from the last one before.
struct RunLengthInput {
  const std::uint8_t* samples = nullptr;
  const std::uint64_t* equal = nullptr;  ///< what equalToNext has found, and one word more
  std::size_t count = 0;                 ///< records begin before this
  std::size_t end = 0;                   ///< the number of samples
};

/// Appends records to `records` (kRunLengthRoom bytes) at `filled`, which is moved on, from sample `at` until the
/// buffer has reached kRunLengthFull or a record would begin at `count` or behind. Returns the next sample.
using RunLengthStep = std::size_t (*)(const RunLengthInput& input, std::size_t at, std::uint8_t* records,
                                      std::size_t& filled);

/// Turning pixels into what a printer takes.
struct PrintSamplesKernels {
  /// Luminance of `pixels` luminance-alpha pixels; 255 where alpha is 126 or less.
  void (*whitenGrey)(const std::uint8_t* from, std::size_t pixels, std::uint8_t* to);
  /// Red, green, blue of `pixels` RGBA pixels; 255 each where alpha is 126 or less.
  void (*whitenColour)(const std::uint8_t* from, std::size_t pixels, std::uint8_t* to);
  /// Packed bits, the first pixel in the most significant one: 1 where the last of a pixel's `channels` bytes (2 or 4)
  /// is 0. The last byte is filled up with zeros.
  void (*transparentBits)(const std::uint8_t* from, std::size_t pixels, int channels, std::uint8_t* bits);
  /// Bit i of words[0..words) tells whether sample i equals the next one: 64 * words + 1 samples are read.
  void (*equalToNext)(const std::uint8_t* samples, std::size_t words, std::uint64_t* equal);
  /// Makes run-length records.
  RunLengthStep runLengthRecords;
  /// As runLengthRecords, but only counts: `records` is not looked at.
  RunLengthStep runLengthSize;
};

const PrintSamplesKernels& printSamplesKernels() noexcept;

}  // namespace qav::kernels
