#pragma once

#include "fuzz/Input.h"
#include "fuzz/Levels.h"
#include "fuzz/g4_decode.h"
#include "tests/codecs/TiffStrip.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qav::fuzz {

/// A page whose rows are runs of the input's, or the row above moved by a little.
inline std::vector<std::vector<bool>> drawPage(Input& input, int width, int height) {
  const auto pixels = static_cast<std::size_t>(width);
  std::vector<std::vector<bool>> rows;
  for (int y = 0; y < height; ++y) {
    std::vector<bool> row;
    const int kind = input.byte();
    if (kind % 4 == 1 && y > 0) {
      const std::vector<bool>& above = rows.back();
      const int shift = kind / 4 % 8 - 4;
      for (int x = 0; x < width; ++x)
        row.push_back(above[static_cast<std::size_t>(std::clamp(x - shift, 0, width - 1))]);
    }
    for (bool black = kind & 2; row.size() < pixels && !input.ended(); black = !black) {
      const std::size_t run = input.byte();
      const std::size_t length = run < 0xC0 ? run : run % 64 * 64 + input.byte() % 64u;
      row.insert(row.end(), std::min(length, pixels - row.size()), black);
    }
    row.resize(pixels);
    rows.push_back(row);
  }
  return rows;
}

inline std::vector<std::uint8_t> packed(const std::vector<std::vector<bool>>& rows, bool wholeBytes) {
  std::vector<std::uint8_t> bytes;
  std::size_t bit = 0;
  for (const auto& row : rows) {
    if (wholeBytes) bit = 0;
    for (const bool black : row) {
      if (bit % 8 == 0) bytes.push_back(0);
      if (black) bytes.back() = static_cast<std::uint8_t>(bytes.back() | 0x80 >> bit % 8);
      ++bit;
    }
  }
  return bytes;
}

/// Where libtiff decodes without any complaint, the rows that this library decodes are the same. There may be fewer of
/// them: libtiff takes a page without its end code, and one that an end code cuts short. Below a row with an empty run
/// they may differ: libtiff remembers its changing elements, where this library looks at the pixels.
inline void expectLibtiffAgrees(const std::vector<std::uint8_t>& coded, int width, int height) {
  test::TiffStrip strip(width, height);
  expect(strip.setCoded(coded));
  const std::vector<std::uint8_t> theirs = strip.decode();
  if (theirs.empty()) return;
  int size[2] = {width, height}, rows = 0, error = 0;
  std::vector<std::uint8_t> bitmap((static_cast<std::size_t>(width) * static_cast<std::size_t>(height) + 7) / 8);
  CCITT_G4_dec(coded.data(), static_cast<int>(coded.size()), size, bitmap.data(), rows, error);
  g4::ReferenceDecoder reference(coded, width, height);
  reference.decode();
  const int alike = std::min(rows, reference.rowsWithoutEmptyRuns + 1);
  const std::size_t stride = (static_cast<std::size_t>(width) + 7) / 8;
  for (std::size_t y = 0, i = 0; y < static_cast<std::size_t>(alike); ++y)
    for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x, ++i)
      expect((bitmap[i / 8] << i % 8 & 0x80) == (theirs[y * stride + x / 8] << x % 8 & 0x80));
}

/// Draws a page: its code is that of libtiff at every level, and decodes to the page here and there. Then damages the
/// code in a few places: the decoder does as the plain one does, and as libtiff.
inline void g4_pages(std::span<const std::uint8_t> bytes) {
  Input input(bytes);
  const int width = 1 + input.below(3000), height = 1 + input.below(16), damages = input.byte() % 4;
  std::uint8_t damage[3][3];
  for (auto& at : damage)
    for (auto& byte : at) byte = input.byte();
  const auto rows = drawPage(input, width, height);
  const std::vector<std::uint8_t> bitmap = packed(rows, false), wholeBytes = packed(rows, true);

  std::vector<std::uint8_t> coded = sameAtEveryLevel([&] {
    std::vector<std::uint8_t> code(bitmap.size() * 8 + static_cast<std::size_t>(height) * 4 + 64);
    int size[2] = {width, height}, capacity = static_cast<int>(code.size()), length = 0, error = 0;
    expect(CCITT_G4_enc(bitmap.data(), size, capacity, code.data(), length, error) == 0);
    code.resize(static_cast<std::size_t>(length));
    return code;
  });
  test::TiffStrip theirs(width, height);
  expect(theirs.encode(wholeBytes) && theirs.coded() == coded);
  expect(theirs.decode() == wholeBytes);

  for (int i = 0; i < damages; ++i) {
    std::uint8_t& byte = coded[static_cast<std::size_t>(damage[i][0] << 8 | damage[i][1]) % coded.size()];
    byte = static_cast<std::uint8_t>(byte ^ damage[i][2]);
  }
  expectLibtiffAgrees(coded, width, height);
  decodePage(coded, width, height);
}

}  // namespace qav::fuzz
