#pragma once

#include "codecs/G4Page.h"

namespace qav::g4 {

/// Reads coded bits from the highest down. Behind the end of the data stand zeros, so that the next bits may always be
/// looked at; remaining() tells how many of them are data.
class BitReader {
 public:
  BitReader(const unsigned char* data, int length) : begin_(data), next_(data), end_(data + length) { refill(); }

  /// The next bits, the first in the highest place.
  std::uint64_t window() const { return window_; }
  /// How many bits of the window hold; 56 to 63 after a refill, so that all of them may be skipped at once.
  int held() const { return held_; }
  std::int64_t position() const { return (next_ - begin_) * 8 + behindEnd_ - held_; }
  std::int64_t remaining() const { return (end_ - begin_) * 8 - position(); }

  void skip(int count) {
    window_ <<= count;
    held_ -= count;
  }

  /// True when so much data follows that after a refill all bits held are data and more than two bytes lie behind them.
  bool plenty() const { return end_ - next_ >= 16; }

  void refill() {
    if (end_ - next_ >= 8) [[likely]] {
      // What lies below the bits that count as held is the same data that the next refill adds again.
      window_ |= loadBits(next_, end_) >> held_;
      next_ += (63 - held_) >> 3;
      held_ |= 56;
      return;
    }
    for (; held_ < 56; held_ += 8) {
      if (next_ < end_)
        window_ |= std::uint64_t{*next_++} << (56 - held_);
      else
        behindEnd_ += 8;
    }
  }

 private:
  const unsigned char* begin_;
  const unsigned char* next_;
  const unsigned char* end_;
  std::uint64_t window_ = 0;
  int held_ = 0;
  std::int64_t behindEnd_ = 0;
};

}  // namespace qav::g4
