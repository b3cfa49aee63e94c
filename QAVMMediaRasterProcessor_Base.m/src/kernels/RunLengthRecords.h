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

/// Chains of records that are followed at once: the place of a record hangs on the length of the one before, so that
/// the processor waits for it, and there is time for others.
inline constexpr std::size_t kRunLengthChains = 4;

/// Chains that make up the records of one text: chain k goes from starts[k] to starts[k + 1] and may be empty.
struct RunLengthMap {
  RunLengthPlace starts[kRunLengthChains + 1];

  /// The bytes that the records ask for.
  std::size_t size() const { return starts[kRunLengthChains].written; }
};

/// Run-length records: a length byte, and the bytes to copy or the one to repeat.
struct RunLengthRecordsKernels {
  /// Finds the records of src[0..srcLen) and how many bytes they ask for. A last record counts in full even when its
  /// bytes are missing.
  RunLengthMap (*count)(const std::uint8_t* src, std::size_t srcLen);
  /// Decodes each chain as long as kRunLengthLongest bytes stand behind a length and as many fit in front of the next
  /// chain; `bytes` holds map.size(). Moves the starts to where decoding has come to. Bytes of a chain behind those
  /// written may have changed.
  void (*decode)(const std::uint8_t* src, std::size_t srcLen, std::uint8_t* bytes, RunLengthMap& map);
};

const RunLengthRecordsKernels& runLengthRecordsKernels() noexcept;

}  // namespace qav::kernels
