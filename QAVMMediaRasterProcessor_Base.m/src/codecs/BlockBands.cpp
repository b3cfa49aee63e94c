#include "codecs/BlockBands.h"

#include <algorithm>
#include <cstring>

namespace qav::block {
namespace {

using Source = std::span<const unsigned char>;
using Target = std::span<unsigned char>;

// Reads a record from its beginning; behind the end there is nothing.
class Cursor {
 public:
  explicit Cursor(Source record) : record_(record) {}

  bool has(std::size_t count) const { return record_.size() - at_ >= count; }
  void skip(std::size_t count) { at_ += std::min(count, record_.size() - at_); }
  // The byte `offset` behind the position, 0 where there is none.
  unsigned byte(std::size_t offset) const { return at_ + offset < record_.size() ? record_[at_ + offset] : 0u; }
  unsigned number16(std::size_t offset) const { return byte(offset) << 8 | byte(offset + 1); }

 private:
  Source record_;
  std::size_t at_ = 0;
};

void put(Target out, std::int64_t offset, unsigned byte) {
  if (offset >= 0 && static_cast<std::uint64_t>(offset) < out.size())
    out[static_cast<std::size_t>(offset)] = static_cast<unsigned char>(byte);
}

void put16(Target out, std::int64_t sample, unsigned high, unsigned low) {
  put(out, 2 * sample, high);
  put(out, 2 * sample + 1, low);
}

// Rows as they are. Neither offset is multiplied by the bytes of a sample: that is how such files are read.
void copyRows(std::int64_t rowLength, const BandRectangle& r, int sampleBytes, Source record, Target out) {
  for (std::int64_t y = r.y0; y <= r.y1; ++y) {
    const std::int64_t from = (y - 1) * rowLength + r.x0 - 1, to = (y - r.y0) * r.width();
    const std::int64_t count = std::min({sampleBytes * r.width(), static_cast<std::int64_t>(record.size()) - from,
                                         static_cast<std::int64_t>(out.size()) - to});
    if (count > 0) std::memcpy(out.data() + to, record.data() + from, static_cast<std::size_t>(count));
  }
}

// Runs that go on from row to row: a count of two bytes and a sample of two. An entry takes two bytes for each byte of
// a sample, so for samples of one byte an entry's sample is the next entry's count.
void paintRuns(std::int64_t rowLength, const BandRectangle& r, int sampleBytes, Source record, Target out) {
  const auto entry = 2 * static_cast<std::size_t>(sampleBytes);
  const std::int64_t past = r.y1 * rowLength;
  std::int64_t sample = 0;
  for (Cursor runs(record); sample < past && runs.has(entry); runs.skip(entry)) {
    const std::int64_t end = std::min(sample + runs.number16(0), past);
    // The run's part in each of its rows, as samples counted from the row's first.
    for (std::int64_t next = 0; sample < end; sample = next) {
      const std::int64_t row = sample / rowLength + 1, rowStart = (row - 1) * rowLength;
      next = std::min(end, rowStart + rowLength);
      const std::int64_t last = std::min(next - rowStart, r.x1);
      for (std::int64_t column = std::max(sample - rowStart + 1, r.x0); row >= r.y0 && column <= last; ++column)
        put16(out, (row - r.y0) * r.width() + column - r.x0, runs.byte(2), runs.byte(3));
    }
  }
}

// One item a row: the number of samples, the first one's column, the samples. Each is written as 0 and its byte.
void placeRows(const BandRectangle& r, Source record, Target out) {
  constexpr unsigned emptyRow = 65535;
  Cursor rows(record);
  for (std::int64_t y = 1; y <= r.y1 && rows.has(2); ++y) {
    const unsigned count = rows.number16(0);
    rows.skip(2);
    if (count == emptyRow) continue;
    const std::int64_t start = static_cast<std::int16_t>(rows.number16(0));
    rows.skip(2);
    for (unsigned i = 0; y >= r.y0 && i < count && rows.has(i + 1); ++i) {
      const std::int64_t column = start + i;
      if (r.hasColumn(column)) put16(out, (y - r.y0) * r.width() + column - r.x0, 0, rows.byte(i));
    }
    rows.skip(count);
  }
}

// Runs that begin anew with every row: a count and a sample, of sampleBytes bytes each.
void fillRuns(std::int64_t rowLength, const BandRectangle& r, int sampleBytes, Source record, Target out) {
  const auto entry = 2 * static_cast<std::size_t>(sampleBytes);
  const auto count = [&](const Cursor& runs) -> std::int64_t {
    return sampleBytes == 1 ? runs.byte(0) : runs.number16(0);
  };
  Cursor runs(record);
  for (std::int64_t passed = 0; passed < (r.y0 - 1) * rowLength && runs.has(entry); runs.skip(entry))
    passed += count(runs);
  for (std::int64_t y = r.y0; y <= r.y1; ++y) {
    for (std::int64_t covered = 0; covered < rowLength && runs.has(entry); runs.skip(entry)) {
      const std::int64_t start = std::max(covered + 1, r.x0);
      covered += count(runs);
      for (std::int64_t x = start; x <= std::min(covered, r.x1); ++x) {
        const std::int64_t sample = (y - r.y0) * r.width() + x - r.x0;
        if (sampleBytes == 1)
          put(out, sample, runs.byte(1));
        else
          put16(out, sample, runs.byte(2), runs.byte(3));
      }
    }
  }
}

}  // namespace

int decodeBand(int compression, std::int64_t rowLength, const BandRectangle& rectangle, int sampleBytes,
               std::span<const unsigned char> record, std::span<unsigned char> out) {
  switch (compression) {
    case 0:
      copyRows(rowLength, rectangle, sampleBytes, record, out);
      return 0;
    case 1:
      paintRuns(rowLength, rectangle, sampleBytes, record, out);
      return 0;
    case 2:
      placeRows(rectangle, record, out);
      return 0;
    case 7:
    case 8:
      if (sampleBytes != (compression == 7 ? 1 : 2)) return -1;
      fillRuns(rowLength, rectangle, sampleBytes, record, out);
      return 0;
    default:
      return -1;
  }
}

}  // namespace qav::block
