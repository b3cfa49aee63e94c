#pragma once

#include "CCITTCodeTables.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// What the next 13 bits of a coded row begin with: a run of `run` pixels in a code of `length` bits; a length of 0
/// marks bits that begin no code.
struct CCITTDecodingEntry {
  std::int16_t run = 0;
  std::uint8_t length = 0;
};

using CCITTDecodingTable = std::array<CCITTDecodingEntry, std::size_t{1} << kLongestCCITTCode>;
extern const CCITTDecodingTable kCCITTWhiteDecoding;
extern const CCITTDecodingTable kCCITTBlackDecoding;

/// Reads the runs of one coded row and nothing behind its last byte.
class CCITTRunReader {
 public:
  CCITTRunReader(const unsigned char* coded, std::size_t length) noexcept
      : next_(coded), end_(coded ? coded + length : nullptr) {}

  /// Length of the next run, at most `limit`; -1 when the string has ended or is damaged.
  std::int64_t Next(bool black, std::int64_t limit) noexcept {
    const CCITTDecodingTable& table = black ? kCCITTBlackDecoding : kCCITTWhiteDecoding;
    std::int64_t run = 0;
    for (;;) {
      Refill();
      const CCITTDecodingEntry entry = table[static_cast<std::size_t>(window_ >> (64 - kLongestCCITTCode))];
      if (entry.length == 0 || entry.length > bits_) return -1;
      window_ <<= entry.length;
      bits_ -= entry.length;
      run += entry.run;
      if (run >= limit) return limit;
      if (entry.run < 64) return run;
    }
  }

 private:
  void Refill() noexcept {
    while (bits_ <= 56 && next_ != end_) {
      window_ |= std::uint64_t{*next_++} << (56 - bits_);
      bits_ += 8;
    }
  }

  const unsigned char* next_;
  const unsigned char* end_;
  std::uint64_t window_ = 0;  ///< unread bits from the top, zeros behind them
  int bits_ = 0;
};

/// Calls `paint(from, to)` for every black run of a coded row of `width` pixels, up to the first damage.
template <class Paint>
void forEachBlackRun(const unsigned char* coded, std::size_t length, std::int64_t width, Paint paint) {
  CCITTRunReader reader(coded, length);
  bool black = false;
  for (std::int64_t x = 0; x < width; black = !black) {
    const std::int64_t run = reader.Next(black, width - x);
    if (run < 0) return;
    if (black && run > 0) paint(x, x + run);
    x += run;
  }
}

/// Sets bits from..to-1 of a packed bitmap, most significant bit first.
void setBits(unsigned char* bitmap, std::int64_t from, std::int64_t to) noexcept;

/// Bytes that encodeCCITTRow may write for a row of `width` pixels.
constexpr std::size_t ccittRowBound(std::int64_t width) noexcept {
  // A single white and a single black pixel take 9 bits together; nothing takes more per pixel.
  return static_cast<std::size_t>(width) / 8 * 5 + 16;
}

/// Codes a packed row into `out`; returns the number of bytes.
std::size_t encodeCCITTRow(const unsigned char* bitmap, std::int64_t width, unsigned char* out) noexcept;
