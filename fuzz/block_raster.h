#pragma once

#include "fuzz/MemoryFile.h"

#include <QAVBlockRasterFile.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qav::fuzz {

/// The first four bytes ask for a rectangle, the rest is the file behind its prologue.
inline void block_raster(std::span<const std::uint8_t> input) {
  if (input.size() < 4) return;
  constexpr std::size_t prologue = 240;
  const MemoryFile file(input.subspan(4), prologue);
  std::int64_t extent[2] = {-1, -1};
  int kind = 0;
  const int header = ripicrhd(file.path().c_str(), &kind, extent);
  expect(kind == 1 && (header == 0 || header == -1 || header == -2));

  const std::int64_t origin[2] = {input[0], input[1]}, size[2] = {input[2] % 64, input[3] % 64};
  const auto read = [&](std::uint8_t before) {
    std::vector<std::uint8_t> out(static_cast<std::size_t>(size[0] * size[1] * 3), before);
    const int results[] = {0, -1, -2, -4, -10, -11};
    const int result = ripicrdt(file.path().c_str(), &kind, origin, size, out.data());
    expect(std::find(std::begin(results), std::end(results), result) != std::end(results));
    return out;
  };
  expect(read(0) == read(0xFF));
}

}  // namespace qav::fuzz
