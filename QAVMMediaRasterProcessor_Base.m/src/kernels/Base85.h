#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

inline constexpr std::uint8_t kBase85Zero = '!';  ///< the digit 0
inline constexpr std::uint8_t kBase85 = 85;
inline constexpr std::size_t kBase85LineGroups = 20;
inline constexpr std::size_t kBase85LineBytes = 4 * kBase85LineGroups;
inline constexpr std::size_t kBase85LineLength = 5 * kBase85LineGroups + 1;  ///< with the new line

/// Base-85 groups: four bytes, most significant first, as five digits '!' + d, most significant first.
struct Base85Kernels {
  /// Writes the digits of the groups at `data` until one is zero (that has a short form) or all `groups` are done, and
  /// returns how many are done. Nothing outside their 5 characters each is written.
  std::size_t (*encodeGroups)(const std::uint8_t* data, std::size_t groups, char* text);
  /// As encodeGroups for lines of kBase85LineGroups groups, each followed by `newLine`. Ends before a line with a zero
  /// group, or somewhat earlier; the characters behind the lines done, up to all lines, may have changed.
  std::size_t (*encodeLines)(const std::uint8_t* data, std::size_t lines, char newLine, char* text);
  /// The length of the run of digits at the start of text[0..count).
  std::size_t (*digitRun)(const std::uint8_t* text, std::size_t count);
  /// Four bytes from each of `groups` groups of five digits; values wrap at 2^32.
  void (*decodeGroups)(const std::uint8_t* digits, std::size_t groups, std::uint8_t* bytes);
};

const Base85Kernels& base85Kernels() noexcept;

}  // namespace qav::kernels
