#pragma once

#include "fuzz/Expect.h"
#include "fuzz/G4Reference.h"
#include "fuzz/Levels.h"

#include <CCITT_G4.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qav::fuzz {

/// Codes the page and decodes it again: the same bits.
inline void expectRoundTrip(const std::vector<std::uint8_t>& bitmap, int width, int height) {
  std::vector<std::uint8_t> coded(bitmap.size() * 8 + static_cast<std::size_t>(height) * 4 + 64);
  std::vector<std::uint8_t> back(bitmap.size());
  int size[2] = {width, height}, capacity = static_cast<int>(coded.size()), length = 0, rows = 0, error = 0;
  expect(CCITT_G4_enc(bitmap.data(), size, capacity, coded.data(), length, error) == 0);
  expect(CCITT_G4_dec(coded.data(), length, size, back.data(), rows, error) == 0);
  expect(back == bitmap);
}

/// Decodes a page at every level. The plain decoder tells what must come out.
inline void decodePage(const std::vector<std::uint8_t>& data, int width, int height) {
  g4::ReferenceDecoder reference(data, width, height);
  const int expectedError = reference.decode();
  std::vector<std::uint8_t> expected((static_cast<std::size_t>(width) * static_cast<std::size_t>(height) + 7) / 8);
  for (std::size_t i = 0; i < reference.pixels.size(); ++i)
    if (reference.pixels[i]) expected[i / 8] = static_cast<std::uint8_t>(expected[i / 8] | 0x80 >> i % 8);

  sameAtEveryLevel([&] {
    std::vector<std::uint8_t> bitmap(expected.size(), 0xAA);
    int size[2] = {width, height}, rows = 0, error = 0;
    const int result = CCITT_G4_dec(data.data(), static_cast<int>(data.size()), size, bitmap.data(), rows, error);
    expect(error == expectedError && result == (error == 0 ? 0 : 1) && rows == reference.rows);
    expect(bitmap == expected);
    return result;
  });
  expectRoundTrip(expected, width, height);
}

/// The first four bytes are width and height, the rest is the data. The plain decoder takes long, so wide pages are
/// low.
inline void g4_decode(std::span<const std::uint8_t> input) {
  if (input.size() < 5) return;
  const int width = 1 + (input[0] << 8 | input[1]) % 5000;
  const int height = 1 + (input[2] << 8 | input[3]) % std::min(300, 100000 / width);
  decodePage({input.begin() + 4, input.end()}, width, height);
}

}  // namespace qav::fuzz
