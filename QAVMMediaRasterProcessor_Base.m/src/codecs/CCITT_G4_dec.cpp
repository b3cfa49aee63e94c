#include <CCITT_G4.h>

#include "codecs/G4BitReader.h"
#include "codecs/G4Page.h"
#include "codecs/G4RunTables.h"

#include <bit>
#include <memory>
#include <new>
#include <utility>

namespace qav::g4 {
namespace {

class Decoder {
 public:
  Decoder(const unsigned char* src, int srcLen, Page page, unsigned char* dst)
      : reader_(src, srcLen), lastCodeByte_(std::int64_t{srcLen} - 2), page_(page), dst_(dst) {
    // Every element takes a bit of data or more: short data cannot ask for long lists.
    const auto most = std::min(static_cast<std::size_t>(page.width) + 3, static_cast<std::size_t>(srcLen) * 8);
    const std::size_t space = ChangingElements::space(most);
    lists_.reset(new int[2 * space]());
    reference_.place(lists_.get());
    coding_.place(lists_.get() + space);
  }

  int decode(int& rows) {
    reference_.close(page_.width);
    while (rows < page_.height) {
      if (const int white = whiteRows(page_.height - rows)) {
        rows += white;
        continue;
      }
      if (const int error = decodeRow()) return error;
      coding_.close(page_.width);
      kernels_.blacken(coding_.at, coding_.count,
                       static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(page_.width), dst_,
                       dst_ + page_.bytes());
      std::swap(reference_, coding_);
      ++rows;
    }
    reader_.refill();
    const bool closed = reader_.remaining() >= kBlockEndBits && reader_.window >> (64 - kBlockEndBits) == kBlockEnd;
    return closed ? 0 : kNoBlockEnd;
  }

 private:
  enum : int { kRowOpen = 0, kRowDone = -1 };

  // A white row below a white row is a single one bit: takes as many as stand here.
  int whiteRows(int most) {
    if (reference_.count > 0) return 0;
    reader_.refill();
    const int rows = std::min({std::countl_one(reader_.window), reader_.held, most});
    reader_.skip(rows);
    return rows;
  }

  int decodeRow();
  int plainVerticals();
  int oneCode();
  int vertical(int offset);
  int horizontal();
  int pass();
  template <class Table>
  int readRun(const Table& table, std::int64_t& run);

  // Moves b1 to the first element of its colour to the right of a0.
  void advanceReference() {
    while (reference_.at[b1_] <= a0_) b1_ += 2;
  }
  // Where runs are measured from: the first pixel, as long as a0 is the imaginary one before it.
  int runStart() const { return std::max(a0_, 1); }

  const kernels::G4RowKernels& kernels_ = kernels::g4RowKernels();
  BitReader reader_;
  std::int64_t lastCodeByte_;
  Page page_;
  unsigned char* dst_;
  std::unique_ptr<int[]> lists_;
  ChangingElements reference_;
  ChangingElements coding_;
  int a0_ = 0;
  std::size_t b1_ = 0;  // index on the reference line
};

// 0 for a complete row, otherwise the error.
int Decoder::decodeRow() {
  if (reader_.remaining() <= 0) return kDataEnds;
  coding_.count = 0;
  a0_ = 0;
  b1_ = 0;
  int state = kRowOpen;
  while (state == kRowOpen) {
    state = plainVerticals();
    if (state == kRowOpen) state = oneCode();
  }
  return state == kRowDone ? 0 : state;
}

// Most of what a page consists of.
int Decoder::plainVerticals() {
  kernels::G4Row row{reference_.at + b1_, coding_.at + coding_.count, a0_, page_.width};
  const bool done = kernels_.decodeVerticals(kVerticalGroups.data(), reader_, row);
  b1_ = static_cast<std::size_t>(row.b1 - reference_.at);
  coding_.count = static_cast<std::size_t>(row.out - coding_.at);
  a0_ = row.a0;
  return done ? kRowDone : kRowOpen;
}

int Decoder::oneCode() {
  reader_.refill();
  const ModeEntry code = kModes[reader_.window];
  if (code.mode == Mode::None)
    return kModes.beginsLongerCode(reader_.window, reader_.remaining()) ? kDataEnds : kInvalidCode;
  if (reader_.remaining() < code.length) return kDataEnds;
  reader_.skip(code.length);
  const int state = code.mode == Mode::Vertical ? vertical(code.offset)
                    : code.mode == Mode::Pass   ? pass()
                                                : horizontal();
  return state == kRowOpen && reader_.position() >> 3 >= lastCodeByte_ ? kDataEnds : state;
}

int Decoder::vertical(int offset) {
  const int a1 = reference_.at[b1_] + offset;
  if (a1 < runStart()) return kInvalidCode;
  if (a1 > page_.width) return kRowDone;
  coding_.push(a1);
  a0_ = a1;
  b1_ = b1_ > 0 ? b1_ - 1 : 1;
  advanceReference();
  return kRowOpen;
}

int Decoder::horizontal() {
  std::int64_t first = 0, second = 0;
  const bool black = coding_.count % 2 != 0;
  int error = black ? readRun(kBlackRuns, first) : readRun(kWhiteRuns, first);
  if (error == 0) error = black ? readRun(kWhiteRuns, second) : readRun(kBlackRuns, second);
  if (error != 0) return error;
  const int edge = page_.width + 1;
  const int a1 = static_cast<int>(std::min<std::int64_t>(runStart() + first, edge));
  const int a2 = static_cast<int>(std::min<std::int64_t>(a1 + second, edge));
  if (a1 < edge) coding_.push(a1);
  if (a2 == edge) return kRowDone;
  coding_.push(a2);
  a0_ = a2;
  advanceReference();
  return kRowOpen;
}

int Decoder::pass() {
  a0_ = reference_.at[b1_ + 1];
  b1_ += 2;
  return a0_ > page_.width ? kRowDone : kRowOpen;
}

template <class Table>
int Decoder::readRun(const Table& table, std::int64_t& run) {
  for (;;) {
    reader_.refill();
    const RunEntry code = table[reader_.window];
    if (code.length == 0) return table.beginsLongerCode(reader_.window, reader_.remaining()) ? kDataEnds : kInvalidCode;
    if (reader_.remaining() < code.length) return kDataEnds;
    reader_.skip(code.length);
    run += code.run;
    if (!code.makeUp) return 0;
  }
}

}  // namespace
}  // namespace qav::g4

int CCITT_G4_dec(const unsigned char* src, int srcLen, int* size, unsigned char* dst, int& rows, int& error) {
  using namespace qav::g4;
  const Page page = pageOf(size);
  rows = 0;
  error = kBadArgument;
  if (!page.valid() || !dst) return 3;
  if (srcLen < 1 || !src) return 2;
  try {
    Decoder decoder(src, srcLen, page, dst);
    std::memset(dst, 0, page.bytes());
    error = decoder.decode(rows);
  } catch (const std::bad_alloc&) {
    return 3;
  }
  return error == 0 ? 0 : 1;
}
