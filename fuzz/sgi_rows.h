#pragma once

#include "fuzz/Input.h"
#include "fuzz/read_rgb.h"

#include <cstdint>
#include <span>
#include <vector>

namespace qav::fuzz {

/// Makes a run-length file whose tables fit: a row of the input's records after another, a few entries of the tables
/// being off the mark.
inline void sgi_rows(std::span<const std::uint8_t> bytes) {
  Input input(bytes);
  const int width = 1 + input.below(1000), height = 1 + input.below(40), channels = 1 + input.below(5);
  const auto entries = static_cast<std::size_t>(height * channels);
  std::vector<std::uint8_t> file{0x01, 0xDA, 1, 1, 0, 3};
  const auto put = [&](std::size_t number, int count) {
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8)
      file.push_back(static_cast<std::uint8_t>(number >> shift));
  };
  for (const int number : {width, height, channels}) put(static_cast<std::size_t>(number), 2);
  file.resize(512);

  std::vector<std::size_t> starts, lengths;
  std::vector<std::uint8_t> rows;
  for (std::size_t entry = 0; entry < entries; ++entry) {
    const int kind = input.byte();
    // Rows may be shared, as they may in a file.
    const bool shared = kind % 4 == 3 && entry > 0;
    starts.push_back(shared ? starts.back() : 512 + 8 * entries + rows.size());
    const std::size_t before = rows.size();
    for (int packets = shared ? 0 : kind % 32; packets > 0 && !input.ended(); --packets) {
      const std::uint8_t head = input.byte();
      rows.push_back(head);
      for (int k = head >= 128 ? head - 128 : 1; k > 0 && !input.ended(); --k) rows.push_back(input.byte());
    }
    lengths.push_back(shared ? lengths.back() : rows.size() - before);
    if (kind >= 0xF0) lengths.back() += static_cast<std::size_t>(input.byte()) << (kind % 16);
    if (kind >= 0xE0 && kind < 0xF0) starts.back() -= input.byte();
  }
  for (const std::size_t start : starts) put(start, 4);
  for (const std::size_t length : lengths) put(length, 4);
  file.insert(file.end(), rows.begin(), rows.end());
  readSGIFile(file);
}

}  // namespace qav::fuzz
