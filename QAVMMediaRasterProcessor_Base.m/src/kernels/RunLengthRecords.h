#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

inline constexpr std::uint8_t kRunLengthEnd = 128;     ///< in the place of a length: the end of the records
inline constexpr std::size_t kRunLengthLongest = 128;  ///< bytes that one record stands for

/// How far decoding has come in the records and in their bytes.
struct RunLengthPlace {
  std::size_t read = 0;
  std::size_t written = 0;
};

/// Run-length records: a length byte, and the bytes to copy or the one to repeat.
struct RunLengthRecordsKernels {
  /// The bytes that src[0..srcLen) asks for. A last record counts in full even when its bytes are missing.
  std::size_t (*count)(const std::uint8_t* src, std::size_t srcLen);
  /// Decodes records from the start of src[0..srcLen) into bytes[0..size) as long as kRunLengthLongest bytes stand
  /// behind a length and as many fit; ends before the end byte too. Bytes behind those written may have changed.
  RunLengthPlace (*decode)(const std::uint8_t* src, std::size_t srcLen, std::uint8_t* bytes, std::size_t size);
};

const RunLengthRecordsKernels& runLengthRecordsKernels() noexcept;

}  // namespace qav::kernels
