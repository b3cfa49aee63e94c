#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

/// What the Group 4 decoder and encoder share.
namespace qav::g4 {

inline constexpr int kBadArgument = 8122;
inline constexpr int kInvalidCode = 14601;
inline constexpr int kNoBlockEnd = 14602;
inline constexpr int kDoesNotFit = 14900;
inline constexpr int kDataEnds = 14901;

/// Two end-of-line codes, which close a page.
inline constexpr std::uint32_t kBlockEnd = 0x001001;
inline constexpr int kBlockEndBits = 24;

/// Size of a page, checked.
struct Page {
  int width = 0;
  int height = 0;

  std::uint64_t bits() const { return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height); }
  std::size_t bytes() const { return static_cast<std::size_t>((bits() + 7) / 8); }
  bool valid() const {
    // Positions up to width + 4 must fit an int, and so must the bytes of the bitmap.
    constexpr int most = std::numeric_limits<int>::max();
    return width > 0 && height > 0 && width <= most - 4 && bytes() <= static_cast<std::size_t>(most);
  }
};

inline Page pageOf(const int* size) { return size ? Page{size[0], size[1]} : Page{}; }

/// A row's changing elements: the 1-based pixel positions where the colour changes, in strictly rising order. The first
/// is a change to black, and so is every second one from there. The entry before the first is 0; behind the last stand
/// at least kSentinels entries of width + 1 once the row is closed.
struct ChangingElements {
  static constexpr std::size_t kSentinels = 8;
  /// Entries behind the sentinels that the inner loops may overrun into.
  static constexpr std::size_t kSlack = 72;

  int* at = nullptr;
  std::size_t count = 0;

  /// Ints that a row of up to `most` elements needs.
  static std::size_t space(std::size_t most) { return 1 + most + kSentinels + kSlack; }
  void place(int* memory) {
    at = memory + 1;
    at[-1] = 0;
  }
  void close(int width) { std::fill_n(at + count, kSentinels, width + 1); }
  /// A colour that changes twice at one position has not changed there.
  void push(int position) {
    if (at[static_cast<std::ptrdiff_t>(count) - 1] == position)
      --count;
    else
      at[count++] = position;
  }
};

inline std::uint64_t bigEndian(std::uint64_t value) {
  if constexpr (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__) return __builtin_bswap64(value);
  return value;
}

/// The 64 bits from byte `from` on, the first in the highest place; those at or behind `end` count as zeros.
inline std::uint64_t loadBits(const unsigned char* from, const unsigned char* end) {
  std::uint64_t value = 0;
  std::memcpy(&value, from, end - from >= 8 ? 8 : static_cast<std::size_t>(end - from));
  return bigEndian(value);
}

/// The reverse: stores what fits before `end`.
inline void storeBits(unsigned char* to, const unsigned char* end, std::uint64_t bits) {
  const std::uint64_t value = bigEndian(bits);
  if (end - to >= 8)
    std::memcpy(to, &value, 8);
  else if (to < end)
    std::memcpy(to, &value, static_cast<std::size_t>(end - to));
}

}  // namespace qav::g4
