#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

inline constexpr std::uint8_t kBase85Zero = '!';  ///< the digit 0
inline constexpr std::uint8_t kBase85 = 85;
inline constexpr std::size_t kBase85LineGroups = 20;
inline constexpr std::size_t kBase85LineBytes = 4 * kBase85LineGroups;
inline constexpr std::size_t kBase85LineLength = 5 * kBase85LineGroups + 1;  ///< with the new line

/// What has been found at the start of a text.
struct Base85Run {
  std::size_t read = 0;    ///< characters: digits, and white space anywhere among them
  std::size_t digits = 0;  ///< how many of them are digits
};

/// Base-85 groups: four bytes, most significant first, as five digits '!' + d, most significant first.
struct Base85Kernels {
  /// Writes the digits of the groups at `data` until one is zero (that has a short form) or all `groups` are done, and
  /// returns how many are done. Nothing outside their 5 characters each is written.
  std::size_t (*encodeGroups)(const std::uint8_t* data, std::size_t groups, char* text);
  /// As encodeGroups for lines of kBase85LineGroups groups, each followed by `newLine`. Ends before a line with a zero
  /// group, or somewhat earlier; the characters behind the lines done, up to all lines, may have changed.
  std::size_t (*encodeLines)(const std::uint8_t* data, std::size_t lines, char newLine, char* text);
  /// Finds the digits at the start of text[0..count), up to the first character that is neither digit nor white space
  /// (NUL, backspace, tab, line feed, form feed, carriage return, space, DEL; not vertical tab).
  Base85Run (*countDigits)(const std::uint8_t* text, std::size_t count);
  /// As countDigits, and copies the digits without the white space; up to 64 bytes behind them may change.
  Base85Run (*squeezeDigits)(const std::uint8_t* text, std::size_t count, std::uint8_t* digits);
  /// Four bytes from each of `groups` groups of five digits; values wrap at 2^32.
  void (*decodeGroups)(const std::uint8_t* digits, std::size_t groups, std::uint8_t* bytes);
};

const Base85Kernels& base85Kernels() noexcept;

}  // namespace qav::kernels
