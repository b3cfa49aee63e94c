#pragma once

#include <cstdint>
#include <span>

namespace qav::block {

/// The rectangle that a band decoder extracts: columns and rows of the band, counted from 1, both ends included.
struct BandRectangle {
  std::int64_t x0 = 1, x1 = 0, y0 = 1, y1 = 0;

  std::int64_t width() const { return x1 - x0 + 1; }
  bool hasColumn(std::int64_t x) const { return x >= x0 && x <= x1; }
};

/// Expands a band record of compression `compression` whose rows have `rowLength` samples of `sampleBytes` bytes, and
/// stores the rectangle's samples in `out`, row after row. What falls outside `out` is dropped; what the record does
/// not hold leaves `out` as it is. Returns 0, or -1 for a compression that it does not handle.
int decodeBand(int compression, std::int64_t rowLength, const BandRectangle& rectangle, int sampleBytes,
               std::span<const unsigned char> record, std::span<unsigned char> out);

}  // namespace qav::block
