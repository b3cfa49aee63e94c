#pragma once

#include "kernels/G4Rows.h"

#include <CCITTCodeTables.h>

#include <array>
#include <cstddef>
#include <cstdint>

/// Look-up tables for reading codes, indexed by the next bits: each entry is the code that those begin with. And the
/// tables that the inner loops work with.
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

  constexpr const Entry& operator[](std::uint64_t window) const { return entries[window >> (64 - kBits)]; }

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

using GroupTable = std::array<kernels::G4Group, std::size_t{1} << kernels::kG4GroupBits>;

constexpr GroupTable makeGroups() {
  GroupTable groups;
  for (std::uint64_t next = 0; next < groups.size(); ++next) {
    kernels::G4Group& group = groups[next];
    for (std::uint64_t window = next << (64 - kernels::kG4GroupBits); group.codes < kernels::kG4GroupCodes;) {
      const ModeEntry code = kModes[window];
      if (code.mode != Mode::Vertical || group.bits + code.length > kernels::kG4GroupBits) break;
      group.bits = static_cast<std::uint8_t>(group.bits + code.length);
      group.offset[group.codes] = code.offset;
      group.ends |= std::uint32_t{group.bits} << (4 * group.codes++);
      window <<= code.length;
    }
  }
  return groups;
}

constexpr kernels::G4Code packed(CCITTCode makeUp, CCITTCode last) {
  const std::uint32_t value = std::uint32_t{makeUp.value} << last.length | last.value;
  return {value << 5 | static_cast<std::uint32_t>(makeUp.length + last.length)};
}

constexpr kernels::G4RunCodes makeRunCodes() {
  kernels::G4RunCodes codes{};
  for (const bool black : {false, true}) {
    for (int run = 0; run < kernels::kG4Runs; ++run)
      codes.run[black][run] =
          packed(run < 64 ? CCITTCode{} : ccittMakeUpCode(black, run & ~63), ccittTerminatingCode(black, run & 63));
    codes.longest[black] = packed({}, ccittMakeUpCode(black, kLongestMakeUp));
  }
  return codes;
}

static_assert(kernels::kG4LongestMakeUp == kLongestMakeUp && kernels::kG4Runs == kLongestMakeUp + 64);

inline constexpr GroupTable kVerticalGroups = makeGroups();
inline constexpr kernels::G4RunCodes kRunCodes = makeRunCodes();

}  // namespace qav::g4
