#include "CCITTCodeTables.h"
#include "codecs/TiffStrip.h"
#include "support/Test.h"

#include <CCITT.h>

namespace qav::test {
namespace {

unsigned below(unsigned limit, std::mt19937& random) { return static_cast<unsigned>(random() % limit); }

Bytes encode(const Bytes& bitmap, unsigned width) {
  unsigned char* coded = nullptr;
  const int length = CCITT::encode(coded, bitmap.data(), width);
  const std::unique_ptr<unsigned char[]> owner(coded);
  return Bytes(coded, coded + length);
}

// Decodes into guarded memory; what lies behind the row must stay as it is.
Bytes decode(const unsigned char* coded, std::size_t length, unsigned width) {
  GuardedBytes row((width + 7) / 8, 3);
  std::fill_n(row.data(), row.size(), std::uint8_t{0});
  CCITT::decode(row.data(), coded, static_cast<unsigned>(length), width);
  EXPECT_TRUE(row.guardsIntact());
  return row.bytes();
}

// A row of random runs; the bits behind the last pixel are zeros.
Bytes randomRow(unsigned width, unsigned longest, std::mt19937& random) {
  Bytes bitmap((width + 7) / 8);
  bool black = random() & 1;
  for (unsigned x = 0; x < width; black = !black)
    for (unsigned end = x + 1 + below(longest, random); x < end && x < width; ++x)
      if (black) bitmap[x / 8] = static_cast<std::uint8_t>(bitmap[x / 8] | 0x80 >> (x % 8));
  return bitmap;
}

TEST(RowCodec, DecodesWhatItCodes) {
  std::mt19937 random(1);
  std::vector<unsigned> widths{127, 128, 1728, 2559, 2560, 2561, 2623, 2624, 5119, 5120, 5184, 20000};
  for (unsigned width = 0; width <= 70; ++width) widths.push_back(width);
  for (const unsigned width : widths)
    for (const unsigned longest : {1u, 2u, 9u, 70u, 3000u, 30000u}) {
      const Bytes row = randomRow(width, longest, random);
      const Bytes coded = encode(row, width);
      EXPECT_EQ(decode(coded.data(), coded.size(), width), row) << width << " " << longest;
    }
}

TEST(RowCodec, IgnoresTheBitsBehindTheLastPixel) {
  for (unsigned width = 1; width < 8; ++width)
    EXPECT_EQ(encode({0xFF}, width), encode({static_cast<std::uint8_t>(0xFF << (8 - width))}, width));
}

// Modified Huffman codes without codes for the ends of lines.
TEST(RowCodec, WritesTheSameCodesAsLibtiff) {
  std::mt19937 random(2);
  const auto check = [&](const Bytes& row, unsigned width) {
    TiffStrip theirs(static_cast<int>(width), 1, COMPRESSION_CCITTRLE);
    ASSERT_TRUE(theirs.encode(row));
    EXPECT_EQ(encode(row, width), theirs.coded()) << width;
  };
  for (const unsigned run : {1u, 63u, 64u, 1727u, 1728u, 1791u, 1792u, 2559u, 2560u, 2623u, 2624u, 5120u, 5183u, 7800u})
    for (const std::uint8_t colour : {std::uint8_t{0}, std::uint8_t{255}}) {
      Bytes row((run + 7) / 8, colour);
      if (run % 8) row.back() = static_cast<std::uint8_t>(row.back() << (8 - run % 8));
      check(row, run);
    }
  for (int i = 0; i < 100; ++i) {  // runs of every length up to 2700 turn up
    const unsigned width = 1 + below(60000, random);
    check(randomRow(width, 1 + below(2700, random), random), width);
  }
}

TEST(RowCodec, DamagedStringsStayInsideTheRow) {
  std::mt19937 random(3);
  for (int i = 0; i < 20000; ++i) {
    const unsigned width = below(300, random);
    Bytes coded(below(40, random));
    for (std::uint8_t& byte : coded) byte = static_cast<std::uint8_t>(random() & random());
    decode(coded.data(), coded.size(), width);
  }
  // Every proper prefix gives the runs before the cut and white behind them.
  const Bytes row = randomRow(200, 9, random), coded = encode(row, 200);
  for (std::size_t length = 0; length < coded.size(); ++length) {
    const Bytes cut(coded.begin(), coded.begin() + static_cast<std::ptrdiff_t>(length));
    const Bytes decoded = decode(cut.data(), length, 200);
    for (std::size_t i = 0; i < row.size(); ++i) EXPECT_EQ(decoded[i] & ~row[i], 0);
  }
}

TEST(RowCodec, OddArguments) {
  EXPECT_EQ(decode(nullptr, 5, 16), Bytes(2));
  EXPECT_EQ(decode(Bytes{0x12}.data(), 0, 16), Bytes(2));
  EXPECT_EQ(decode(encode({0xFF, 0xFF}, 16).data(), 3, 5), Bytes{0xF8}) << "a run too long ends with the row";
  EXPECT_TRUE(encode({}, 0).empty());
  CCITT::decode(nullptr, Bytes{0x12}.data(), 1, 8);
  unsigned char* coded = nullptr;
  EXPECT_EQ(CCITT::encode(coded, nullptr, 8), 0);
  EXPECT_EQ(coded, nullptr);
}

}  // namespace
}  // namespace qav::test
