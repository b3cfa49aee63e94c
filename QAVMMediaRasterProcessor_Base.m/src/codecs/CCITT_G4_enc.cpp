#include <CCITT_G4.h>

#include "codecs/G4Page.h"

#include <CCITTCodeTables.h>

#include <bit>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace qav::g4 {
namespace {

// Writes bits from the highest down. Counts all of them, and stores those that fit.
class BitWriter {
 public:
  BitWriter(unsigned char* to, int capacity) : to_(to), capacity_(static_cast<std::size_t>(capacity)) {}

  // The `length` lowest bits of `code`, at most 56. Whole bytes are stored at once, the started one again and again.
  void put(std::uint64_t code, int length) {
    pending_ |= code << (64 - held_ - length);
    held_ += length;
    flush();
    const int whole = held_ >> 3;
    bytes_ += static_cast<std::size_t>(whole);
    pending_ <<= whole * 8;
    held_ &= 7;
  }

  std::uint64_t bits() const { return std::uint64_t{bytes_} * 8 + static_cast<std::uint64_t>(held_); }

 private:
  void flush() {
    if (bytes_ + 8 <= capacity_) [[likely]] {
      const std::uint64_t value = bigEndian(pending_);
      std::memcpy(to_ + bytes_, &value, 8);
    } else if (bytes_ < capacity_) {
      storeBits(to_ + bytes_, to_ + capacity_, pending_);
    }
  }

  unsigned char* to_;
  std::size_t capacity_;
  std::size_t bytes_ = 0;
  std::uint64_t pending_ = 0;
  int held_ = 0;  // fewer than 8 between two calls
};

// A row's list that grows with the changes that it really has.
class GrowingElements {
 public:
  GrowingElements() { reserve(4096); }

  ChangingElements& elements() { return elements_; }
  void reserve(std::size_t most) {
    if (memory_.size() >= ChangingElements::space(most)) return;
    memory_.resize(ChangingElements::space(2 * most));
    elements_.place(memory_.data());
  }

 private:
  std::vector<int> memory_;
  ChangingElements elements_;
};

void putRun(BitWriter& writer, bool black, int run) {
  const CCITTCode longest = ccittMakeUpCode(black, kLongestMakeUp);
  for (; run >= kLongestMakeUp + 64; run -= kLongestMakeUp) writer.put(longest.value, longest.length);
  const CCITTCode last = ccittTerminatingCode(black, run & 63);
  if (run < 64) return writer.put(last.value, last.length);
  const CCITTCode makeUp = ccittMakeUpCode(black, run & ~63);
  writer.put(std::uint64_t{makeUp.value} << last.length | last.value, makeUp.length + last.length);
}

class Encoder {
 public:
  Encoder(const unsigned char* bitmap, Page page, unsigned char* dst, int capacity)
      : bitmap_(bitmap), bitmapEnd_(bitmap + page.bytes()), page_(page), writer_(dst, capacity) {}

  // The number of coded bytes, or 0 when they do not fit.
  int encode(int capacity) {
    reference_.elements().close(page_.width);
    for (int row = 0; row < page_.height; ++row) {
      scanRow(static_cast<std::uint64_t>(row) * static_cast<std::uint64_t>(page_.width));
      codeRow();
      std::swap(reference_, coding_);
    }
    const std::uint64_t used = writer_.bits() / 8 + 1;
    if (static_cast<std::uint64_t>(capacity) <= used + 2) return 0;
    writer_.put(kBlockEnd, kBlockEndBits);
    return static_cast<int>((writer_.bits() + 7) / 8);
  }

 private:
  void scanRow(std::uint64_t firstBit);
  void codeRow();

  const unsigned char* bitmap_;
  const unsigned char* bitmapEnd_;
  Page page_;
  BitWriter writer_;
  GrowingElements reference_;
  GrowingElements coding_;
};

// Finds the changing elements of a row, 64 pixels at a time on word boundaries of the bitmap. Pixels of the rows before
// and behind count as white.
void Encoder::scanRow(std::uint64_t firstBit) {
  ChangingElements& row = coding_.elements();
  row.count = 0;
  const std::uint64_t pastBit = firstBit + static_cast<std::uint64_t>(page_.width);
  std::uint64_t mask = ~std::uint64_t{0} >> (firstBit % 64);
  std::uint64_t previous = 0;
  for (std::uint64_t word = firstBit / 64; word * 64 < pastBit; ++word) {
    const std::uint64_t bits = loadBits(bitmap_ + word * 8, bitmapEnd_) & mask;
    mask = ~std::uint64_t{0};
    std::uint64_t changes = bits ^ (bits >> 1 | previous << 63);
    previous = bits & 1;
    if (changes == 0) continue;
    coding_.reserve(row.count + 64);
    const int base = static_cast<int>(static_cast<std::int64_t>(word * 64) - static_cast<std::int64_t>(firstBit)) + 1;
    // Eight at a time whether there are as many or not: cheaper than a branch that nothing foretells.
    int* at = row.at + row.count;
    const int count = std::popcount(changes);
    for (int done = 0; done < count; done += 8) {
      for (int i = 0; i < 8; ++i) {
        const int bit = std::countl_zero(changes);
        *at++ = base + bit;
        changes &= ~(std::uint64_t{1} << 63 >> (bit & 63));
      }
    }
    row.count += static_cast<std::size_t>(count);
  }
  while (row.count > 0 && row.at[row.count - 1] > page_.width) --row.count;
  row.close(page_.width);
}

// Works on a copy of the writer: stores into the output could otherwise change the original, for all that the compiler
// knows.
void Encoder::codeRow() {
  static constexpr CCITTCode verticals[] = {{0b0000010, 7}, {0b000010, 6}, {0b010, 3},    {0b1, 1},
                                            {0b011, 3},     {0b000011, 6}, {0b0000011, 7}};
  BitWriter writer = writer_;
  const int* a = coding_.elements().at;
  const int* b = reference_.elements().at;
  const int width = page_.width;
  for (int a0 = 0; a0 <= width;) {
    const int a1 = *a;
    const int offset = a1 - *b;
    if (b[1] < a1) {
      writer.put(0b0001, 4);
      a0 = b[1];
      b += 2;
    } else if (offset >= -3 && offset <= 3) {
      const CCITTCode code = verticals[offset + 3];
      writer.put(code.value, code.length);
      a0 = a1;
      ++a;
      // The next b1 has the other colour; it may be the element before this one. The entry before the first is 0.
      b += b[-1] > a0 ? -1 : 1;
      while (*b <= a0 && a0 <= width) b += 2;
    } else {
      const bool black = (a - coding_.elements().at) % 2 != 0;
      writer.put(0b001, 3);
      putRun(writer, black, a1 - std::max(a0, 1));
      putRun(writer, !black, a[1] - a1);
      a0 = a[1];
      a += 2;
      while (*b <= a0 && a0 <= width) b += 2;
    }
  }
  writer_ = writer;
}

// The bitmap, or a copy of it where clearing the output would destroy it.
const unsigned char* readable(const unsigned char* bitmap, Page page, const unsigned char* dst, int capacity,
                              std::unique_ptr<unsigned char[]>& copy) {
  const auto start = reinterpret_cast<std::uintptr_t>(bitmap), target = reinterpret_cast<std::uintptr_t>(dst);
  const bool overlap = start < target + static_cast<std::uintptr_t>(capacity) && target < start + page.bytes();
  if (!overlap) return bitmap;
  copy.reset(new unsigned char[page.bytes()]);
  std::memcpy(copy.get(), bitmap, page.bytes());
  return copy.get();
}

}  // namespace
}  // namespace qav::g4

int CCITT_G4_enc(const unsigned char* bitmap, int* size, int& capacity, unsigned char* dst, int& length, int& error) {
  using namespace qav::g4;
  const Page page = pageOf(size);
  length = 0;
  error = kBadArgument;
  if (!page.valid() || !bitmap) return 3;
  if (capacity < 0 || !dst) return 2;
  try {
    std::unique_ptr<unsigned char[]> copy;
    bitmap = readable(bitmap, page, dst, capacity, copy);
    Encoder encoder(bitmap, page, dst, capacity);
    std::memset(dst, 0, static_cast<std::size_t>(capacity));
    length = encoder.encode(capacity);
  } catch (const std::bad_alloc&) {
    return 3;
  }
  error = length > 0 ? 0 : kDoesNotFit;
  return error == 0 ? 0 : 1;
}
