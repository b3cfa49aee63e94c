#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Bytes that may be read behind the last sample given to PrintSamplesKernels::runLengthRecords.
inline constexpr std::size_t kRunLengthLookahead = 320;
/// A buffer of records that holds this much takes no further record.
inline constexpr std::size_t kRunLengthFull = 896;
/// Bytes that a buffer of records needs: what one step may add, and whole vectors behind it.
inline constexpr std::size_t kRunLengthRoom = 1280;

using RunLengthStep = std::size_t (*)(const std::uint8_t* samples, std::size_t count, std::size_t end,
                                      std::uint8_t* records, std::size_t& filled);

/// Turning pixels into what a printer takes.
struct PrintSamplesKernels {
  /// Luminance of `pixels` luminance-alpha pixels; 255 where alpha is 126 or less.
  void (*whitenGrey)(const std::uint8_t* from, std::size_t pixels, std::uint8_t* to);
  /// Red, green, blue of `pixels` RGBA pixels; 255 each where alpha is 126 or less.
  void (*whitenColour)(const std::uint8_t* from, std::size_t pixels, std::uint8_t* to);
  /// Packed bits, the first pixel in the most significant one: 1 where the last of a pixel's `channels` bytes (2 or 4)
  /// is 0. The last byte is filled up with zeros.
  void (*transparentBits)(const std::uint8_t* from, std::size_t pixels, int channels, std::uint8_t* bits);
  /// Run-length records for samples[0..end), appended to `records` (kRunLengthRoom bytes) at `filled`, until that has
  /// reached kRunLengthFull or a record would begin at `count` or behind; `filled` is moved on. Returns the number of
  /// samples done.
  ///
  /// kRunLengthLookahead samples behind `count` are looked at. Where `end` lies among them, those behind it must all be
  /// equal and differ from the last one before.
  RunLengthStep runLengthRecords;
  /// As runLengthRecords, but only counts: `records` is not looked at.
  RunLengthStep runLengthSize;
};

const PrintSamplesKernels& printSamplesKernels() noexcept;

}  // namespace qav::kernels
