#include "CCITTRow.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr void enter(CCITTDecodingTable& table, CCITTCode code, int run) {
  const int freeBits = kLongestCCITTCode - code.length;
  const std::size_t first = static_cast<std::size_t>(code.value) << freeBits;
  for (std::size_t i = 0; i < std::size_t{1} << freeBits; ++i)
    table[first + i] = {static_cast<std::int16_t>(run), code.length};
}

constexpr CCITTDecodingTable makeDecodingTable(bool black) {
  CCITTDecodingTable table{};
  for (int run = 0; run < 64; ++run) enter(table, ccittTerminatingCode(black, run), run);
  for (int run = 64; run <= kLongestMakeUp; run += 64) enter(table, ccittMakeUpCode(black, run), run);
  return table;
}

class BitWriter {
 public:
  explicit BitWriter(unsigned char* out) noexcept : begin_(out), out_(out) {}

  void Put(CCITTCode code) noexcept {
    window_ = window_ << code.length | code.value;
    bits_ += code.length;
    for (; bits_ >= 8; bits_ -= 8) *out_++ = static_cast<unsigned char>(window_ >> (bits_ - 8));
  }
  std::size_t Finish() noexcept {
    if (bits_ > 0) *out_++ = static_cast<unsigned char>(window_ << (8 - bits_));
    return static_cast<std::size_t>(out_ - begin_);
  }

 private:
  unsigned char* begin_;
  unsigned char* out_;
  std::uint32_t window_ = 0;
  int bits_ = 0;
};

void putRun(BitWriter& writer, bool black, std::int64_t run) noexcept {
  for (; run > kLongestMakeUp + 63; run -= kLongestMakeUp) writer.Put(ccittMakeUpCode(black, kLongestMakeUp));
  if (run >= 64) writer.Put(ccittMakeUpCode(black, static_cast<int>(run) & ~63));
  writer.Put(ccittTerminatingCode(black, static_cast<int>(run) & 63));
}

// First position from `from` on whose pixel has the other colour, or `width`.
std::int64_t runEnd(const unsigned char* bitmap, std::int64_t from, std::int64_t width, bool black) noexcept {
  const unsigned char flip = black ? 0xFF : 0;
  const std::uint64_t sameColour = black ? ~std::uint64_t{0} : 0;
  const std::int64_t bytes = (width + 7) / 8;
  std::int64_t at = from / 8;
  auto different = static_cast<unsigned char>((bitmap[at] ^ flip) & (0xFF >> (from % 8)));
  while (different == 0 && ++at < bytes) {
    for (std::uint64_t word; at + 8 <= bytes; at += 8) {
      std::memcpy(&word, bitmap + at, 8);
      if (word != sameColour) break;
    }
    if (at < bytes) different = bitmap[at] ^ flip;
  }
  return std::min(width, at * 8 + std::countl_zero(different));
}

}  // namespace

constinit const CCITTDecodingTable kCCITTWhiteDecoding = makeDecodingTable(false);
constinit const CCITTDecodingTable kCCITTBlackDecoding = makeDecodingTable(true);

void setBits(unsigned char* bitmap, std::int64_t from, std::int64_t to) noexcept {
  const std::int64_t first = from / 8, last = (to - 1) / 8;
  const int firstMask = 0xFF >> (from % 8), lastMask = 0xFF << (7 - (to - 1) % 8);
  if (first == last) {
    bitmap[first] = static_cast<unsigned char>(bitmap[first] | (firstMask & lastMask));
    return;
  }
  bitmap[first] = static_cast<unsigned char>(bitmap[first] | firstMask);
  std::memset(bitmap + first + 1, 0xFF, static_cast<std::size_t>(last - first - 1));
  bitmap[last] = static_cast<unsigned char>(bitmap[last] | lastMask);
}

std::size_t encodeCCITTRow(const unsigned char* bitmap, std::int64_t width, unsigned char* out) noexcept {
  BitWriter writer(out);
  bool black = false;
  for (std::int64_t x = 0; x < width; black = !black) {
    const std::int64_t end = runEnd(bitmap, x, width, black);
    putRun(writer, black, end - x);
    x = end;
  }
  return writer.Finish();
}
