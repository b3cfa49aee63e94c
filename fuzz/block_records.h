#pragma once

#include "fuzz/Input.h"
#include "fuzz/block_raster.h"
#include "tests/codecs/block_file_writer.h"

#include <cstdint>
#include <span>
#include <vector>

namespace qav::fuzz {

/// Makes a block-record file with whole records: an image of any type and size, and bands of what is left.
inline void block_records(std::span<const std::uint8_t> bytes) {
  constexpr int types[] = {20400, 20401, 20407, 20408, 10400, 10407, 10402, 20500, 20501, 20502, 20508, 1, 8, 20799};
  Input input(bytes);
  test::BlockFileWriter file(2);
  const std::uint8_t rectangle[] = {input.byte(), input.byte(), input.byte(), input.byte()};
  const int width = input.byte() % 16 ? 1 + input.below(64) : input.word() * 16;
  const int height = input.byte() % 16 ? 1 + input.below(64) : input.word();
  const int type = types[static_cast<std::size_t>(input.below(std::size(types)))];
  const int others = input.byte() % 4, bands = input.byte() % 6 - 1, table = input.byte() % 40;
  file.entry(8, others);
  for (int i = 0; i < others; ++i) file.record({input.byte(), 2, 3});
  file.image(width, height, type, bands, table);
  while (!input.ended()) {
    const std::size_t length = input.byte() * 3u;
    std::vector<std::uint8_t> record;
    while (record.size() < length && !input.ended()) record.push_back(input.byte());
    file.record(record);
  }
  std::vector<std::uint8_t> request(rectangle, rectangle + 4);
  request.insert(request.end(), file.bytes().begin() + 240, file.bytes().end());
  block_raster(request);
}

}  // namespace qav::fuzz
