#pragma once

#include "codecs/G4Page.h"
#include "kernels/G4Rows.h"

namespace qav::g4 {

/// Reads coded bits from the highest down. Behind the end of the data stand zeros, so that the next bits may always be
/// looked at; remaining() tells how many of them are data. A refill leaves 56 to 63 bits held, so that all of them may
/// be skipped at once.
class BitReader : public kernels::G4Input {
 public:
  BitReader(const unsigned char* data, int length) : G4Input{data, data + length}, begin_(data) { refill(); }

  std::int64_t position() const { return (next - begin_) * 8 + behindEnd_ - held; }
  std::int64_t remaining() const { return (end - begin_) * 8 - position(); }

  void skip(int count) {
    window <<= count;
    held -= count;
  }

  void refill() {
    if (end - next >= 8) [[likely]] {
      // What lies below the bits that count as held is the same data that the next refill adds again.
      window |= loadBits(next, end) >> held;
      next += (63 - held) >> 3;
      held |= 56;
      return;
    }
    for (; held < 56; held += 8) {
      if (next < end)
        window |= std::uint64_t{*next++} << (56 - held);
      else
        behindEnd_ += 8;
    }
  }

 private:
  const unsigned char* begin_;
  std::int64_t behindEnd_ = 0;
};

}  // namespace qav::g4
