#pragma once

#include <CCITTCodeTables.h>

#include <array>
#include <cstddef>
#include <cstdint>

/// Look-up tables for reading codes, indexed by the next bits: each entry is the code that those begin with.
namespace qav::g4 {

struct RunEntry {
  std::uint16_t run = 0;
  std::uint8_t length = 0;  ///< bits of the code; 0 where no code begins like this
  bool makeUp = false;      ///< another code of the same run follows
};

enum class Mode : std::uint8_t { None, Vertical, Horizontal, Pass };

struct ModeEntry {
  Mode mode = Mode::None;
  std::int8_t offset = 0;   ///< of a1 from b1 in vertical mode
  std::uint8_t length = 0;  ///< bits of the code; 0 where no code begins like this
};

template <class Entry, int indexBits>
struct CodeTable {
  static constexpr int kBits = indexBits;
  std::array<Entry, std::size_t{1} << indexBits> entries{};

  const Entry& operator[](std::uint64_t window) const { return entries[window >> (64 - kBits)]; }

  constexpr void enter(unsigned code, int length, Entry entry) {
    entry.length = static_cast<std::uint8_t>(length);
    const int free = kBits - length;
    for (std::size_t tail = 0; tail < std::size_t{1} << free; ++tail)
      entries[(std::size_t{code} << free) + tail] = entry;
  }

  /// True when a code of more than `count` bits begins with the `count` highest of `window`.
  bool beginsLongerCode(std::uint64_t window, std::int64_t count) const {
    if (count >= kBits) return false;
    const int known = count > 0 ? static_cast<int>(count) : 0;
    const std::size_t alike = std::size_t{1} << (kBits - known);
    const std::size_t first = (window >> (64 - kBits)) & ~(alike - 1);
    for (std::size_t i = first; i < first + alike; ++i)
      if (entries[i].length > known) return true;
    return false;
  }
};

using ModeTable = CodeTable<ModeEntry, 7>;
using WhiteTable = CodeTable<RunEntry, 12>;
using BlackTable = CodeTable<RunEntry, 13>;

constexpr ModeTable makeModeTable() {
  ModeTable table;
  table.enter(0b1, 1, {Mode::Vertical, 0, 0});
  table.enter(0b011, 3, {Mode::Vertical, 1, 0});
  table.enter(0b010, 3, {Mode::Vertical, -1, 0});
  table.enter(0b000011, 6, {Mode::Vertical, 2, 0});
  table.enter(0b000010, 6, {Mode::Vertical, -2, 0});
  table.enter(0b0000011, 7, {Mode::Vertical, 3, 0});
  table.enter(0b0000010, 7, {Mode::Vertical, -3, 0});
  table.enter(0b001, 3, {Mode::Horizontal, 0, 0});
  table.enter(0b0001, 4, {Mode::Pass, 0, 0});
  return table;
}

template <class Table>
constexpr Table makeRunTable(bool black) {
  Table table;
  const auto enter = [&](CCITTCode code, int run, bool makeUp) {
    table.enter(code.value, code.length, {static_cast<std::uint16_t>(run), 0, makeUp});
  };
  for (int run = 0; run < 64; ++run) enter(ccittTerminatingCode(black, run), run, false);
  for (int run = 64; run <= kLongestMakeUp; run += 64) enter(ccittMakeUpCode(black, run), run, true);
  return table;
}

inline constexpr ModeTable kModes = makeModeTable();
inline constexpr WhiteTable kWhiteRuns = makeRunTable<WhiteTable>(false);
inline constexpr BlackTable kBlackRuns = makeRunTable<BlackTable>(true);

}  // namespace qav::g4
