#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Coded bits on their way in, the next one in the highest place of `window`. Below the `held` bits that count may
/// stand more of the same data.
struct G4Input {
  const std::uint8_t* next = nullptr;
  const std::uint8_t* end = nullptr;
  std::uint64_t window = 0;
  int held = 0;
};

/// Coded bits on their way out: `bytes` whole ones are done, `held` (fewer than 8) bits wait at the top of `pending`.
/// Counts all of them, stores those that fit into `capacity` bytes.
struct G4Output {
  std::uint8_t* to = nullptr;
  std::size_t capacity = 0;
  std::size_t bytes = 0;
  std::uint64_t pending = 0;
  int held = 0;
};

/// A row being decoded against the one above. Lists of changing elements rise strictly; an entry that is lower stands
/// before their first, and several of width + 1 stand behind their last.
struct G4Row {
  const int* b1 = nullptr;  ///< in the list above: the element that the next vertical code counts from
  int* out = nullptr;       ///< behind the last element of this row's list
  int a0 = 0;
  int width = 0;
};

/// The vertical codes that the next kG4GroupBits bits begin with, at most eight.
inline constexpr int kG4GroupBits = 10;
inline constexpr int kG4GroupCodes = 8;
struct G4Group {
  std::int8_t offset[kG4GroupCodes] = {};  ///< of each changing element from its b1
  std::uint32_t ends = 0;                  ///< four bits for each code: where it ends, counted in bits from the first
  std::uint8_t codes = 0;
  std::uint8_t bits = 0;  ///< of all codes

  /// Bits of the first `count` codes.
  [[gnu::always_inline]] int bitsOf(int count) const {
    return static_cast<int>(std::uint64_t{ends} << 4 >> (4 * count) & 15);
  }
};

/// A code word: `bits` holds its value times 32 plus its length.
struct G4Code {
  std::uint32_t bits = 0;
};

/// Runs of 0 to 2623 as make-up code and terminating code in one, for white and for black; a longer run is any number
/// of codes for 2560 and then one of these.
inline constexpr int kG4Runs = 2624;
inline constexpr int kG4LongestMakeUp = 2560;
struct G4RunCodes {
  G4Code run[2][kG4Runs];
  G4Code longest[2];
};

/// The inner loops of Group 4 coding.
struct G4RowKernels {
  /// Stores where pixels of a row differ from the one before, the first from white: 1-based positions up to `width`.
  /// The row begins at bit `firstBit` of a bitmap that ends at `end`. Returns their number; up to 64 entries more may
  /// be written.
  std::size_t (*findChanges)(const std::uint8_t* bitmap, const std::uint8_t* end, std::uint64_t firstBit, int width,
                             int* at);
  /// Codes a row with the changing elements `a` against the row `b`.
  void (*codeRow)(const int* a, const int* b, int width, const G4RunCodes& codes, G4Output& output);
  /// Takes vertical codes that move to the right as long as 16 bytes follow. True when they complete the row.
  bool (*decodeVerticals)(const G4Group* groups, G4Input& input, G4Row& row);
  /// Blackens the pixels of a row between its `count` changing elements, the last of them to the edge if they are odd,
  /// with an entry of width + 1 behind them. The row begins at bit `firstBit` of a bitmap that ends at `end` and is
  /// white from there on.
  void (*blacken)(const int* at, std::size_t count, std::uint64_t firstBit, std::uint8_t* bitmap,
                  const std::uint8_t* end);
};

const G4RowKernels& g4RowKernels() noexcept;

}  // namespace qav::kernels
