#include <CCITT_G4.h>

#include "fuzz/g4_pages.h"
#include "support/Test.h"

namespace qav::test {
namespace {

// A page as the library takes it: rows begin where those before end.
struct Bitmap {
  int width, height;
  Bytes bytes;
};

std::size_t bytesFor(int width, int height) {
  return (static_cast<std::size_t>(width) * static_cast<std::size_t>(height) + 7) / 8;
}

// Kinds of page: noise; strokes that drift from row to row; long runs; stripes as fine as can be; white; black.
constexpr int kKinds = 6;

std::vector<std::vector<bool>> drawPage(int width, int height, int kind, std::mt19937& random) {
  std::vector<std::vector<bool>> rows(static_cast<std::size_t>(height));
  std::vector<int> strokes;
  for (int i = 0; i < width / 12 + 1; ++i) strokes.push_back(below(width, random));
  for (int y = 0; y < height; ++y) {
    bool black = random() & 1;
    for (int& stroke : strokes) stroke += below(9, random) - 4;
    for (int x = 0; x < width; ++x) {
      const auto covers = [=](int stroke) { return x >= stroke && x < stroke + 5; };
      const bool stroked = kind == 1 && y % 7 != 0 && std::any_of(strokes.begin(), strokes.end(), covers);
      if (kind == 2 && random() % 1500 == 0) black = !black;
      rows[static_cast<std::size_t>(y)].push_back((kind == 0 && random() & 1) || stroked || (kind == 2 && black) ||
                                                  (kind == 3 && (x + y / 3) & 1) || kind == 5);
    }
  }
  return rows;
}

Bitmap makePage(int width, int height, int kind, std::mt19937& random) {
  return {width, height, fuzz::packed(drawPage(width, height, kind, random), false)};
}

struct Coded {
  int result, length, error;
  Bytes bytes;
};

Coded encode(const Bitmap& page, int capacity) {
  GuardedBytes out(static_cast<std::size_t>(capacity), 1);
  Coded coded{};
  int size[2] = {page.width, page.height};
  coded.result = CCITT_G4_enc(page.bytes.data(), size, capacity, out.data(), coded.length, coded.error);
  EXPECT_TRUE(out.guardsIntact());
  coded.bytes = out.bytes();
  for (std::size_t i = static_cast<std::size_t>(coded.length); coded.result == 0 && i < coded.bytes.size(); ++i)
    EXPECT_EQ(coded.bytes[i], 0) << "behind the code";
  if (coded.result == 0) coded.bytes.resize(static_cast<std::size_t>(coded.length));
  return coded;
}

struct Decoded {
  int result, rows, error;
  Bytes bytes;
};

Decoded decode(const Bytes& coded, int width, int height) {
  GuardedBytes out(bytesFor(width, height), 3);
  // A copy of the exact size, so that a sanitizer sees a read behind the end.
  const std::vector<std::uint8_t> source(coded);
  int size[2] = {width, height};
  Decoded d{};
  d.result = CCITT_G4_dec(source.data(), static_cast<int>(source.size()), size, out.data(), d.rows, d.error);
  EXPECT_TRUE(out.guardsIntact());
  d.bytes = out.bytes();
  return d;
}

int roomFor(const Bitmap& page) { return static_cast<int>(page.bytes.size()) * 8 + page.height * 4 + 64; }

TEST(G4, EveryBitmapIsCodedAsByLibtiffAndDecoded) {
  std::mt19937 random(4);
  const auto compare = [&](int width, int height, int kind) {
    SCOPED_TRACE(testing::Message() << width << " x " << height << " of kind " << kind);
    const auto rows = drawPage(width, height, kind, random);
    const Bitmap page{width, height, fuzz::packed(rows, false)};
    TiffStrip theirs(width, height);
    ASSERT_TRUE(theirs.encode(fuzz::packed(rows, true)));
    const Coded coded = encode(page, roomFor(page));
    ASSERT_EQ(coded.result, 0);
    ASSERT_EQ(coded.bytes, theirs.coded()) << "both leave no choice of codes";
    const Decoded decoded = decode(coded.bytes, width, height);
    ASSERT_EQ(decoded.result, 0) << decoded.error;
    ASSERT_EQ(decoded.rows, height);
    ASSERT_EQ(decoded.bytes, page.bytes);
  };
  atEveryLevel([&] {
    for (int kind = 0; kind < kKinds; ++kind) {
      for (int width = 1; width <= 70; ++width) compare(width, 1 + below(24, random), kind);
      for (const int width : {127, 128, 1728, 2561, 5000, 20000}) compare(width, 9, kind);
    }
  });
}

// The plain decoder, at every level, tells the error and the rows.
TEST(G4, DamagedData) {
  std::mt19937 random(9);
  for (int round = 0; round < 4000; ++round) {
    const int width = 1 + below(round % 8 == 0 ? 3000 : 60, random);
    const Bitmap page = makePage(width, 1 + below(12, random), round % kKinds, random);
    Bytes data = encode(page, roomFor(page)).bytes;
    if (round % 3 != 0) data.resize(1 + random() % data.size());
    for (int flips = round % 4; flips > 0; --flips) {
      std::uint8_t& byte = data[random() % data.size()];
      byte = static_cast<std::uint8_t>(byte ^ 1 << random() % 8);
    }
    if (round % 16 == 5)
      for (auto& byte : data) byte = static_cast<std::uint8_t>(random());
    fuzz::decodePage(data, page.width, page.height);
    atEveryLevel([&] { decode(data, page.width, page.height); });  // within guards
  }
}

TEST(G4, HandMadePages) {
  const struct {
    const char* what;
    Bytes data;
    int width, height, result, error, rows;
    Bytes bitmap;
  } cases[] = {
      {"white row", {0x80, 0x08, 0x00, 0x80}, 8, 1, 0, 0, 1, {0}},
      {"white row without an end", {0x80}, 8, 1, 1, 14602, 1, {0}},
      {"extension code", {0x01, 0, 0, 0, 0, 0}, 8, 1, 1, 14601, 0, {0}},
      // Three rows of white 1, black 1, without padding: H w1 b1 V0 | V0 V0 V0 | V0 V0 V0 | end
      {"3 x 3", {0x23, 0xAF, 0xE0, 0x02, 0x00, 0x20}, 3, 3, 0, 0, 3, {0b01001001, 0}},
      {"black from the first pixel: H w0 b8", {0x26, 0xA2, 0x80, 0x08, 0x00, 0x80}, 8, 1, 0, 0, 1, {0xFF}},
      {"more white rows than the data holds bits", Bytes(8, 0xFF), 8, 100, 1, 14901, 64, Bytes(100)},
  };
  for (const auto& c : cases) {
    const Decoded decoded = decode(c.data, c.width, c.height);
    EXPECT_EQ(decoded.result, c.result) << c.what;
    EXPECT_EQ(decoded.error, c.error) << c.what;
    EXPECT_EQ(decoded.rows, c.rows) << c.what;
    EXPECT_EQ(decoded.bytes, c.bitmap) << c.what;
  }
}

TEST(G4, CapacityMustBeThreeBytesMoreThanTheRowsTake) {
  std::mt19937 random(2);
  for (int width = 1; width < 40; ++width) {
    const Bitmap page = makePage(width, 5, width % kKinds, random);
    const Coded whole = encode(page, 1000);
    ASSERT_EQ(whole.result, 0);
    // The least capacity that works tells U; the end block then leaves one byte unused when the rows fill whole bytes.
    int least = 0;
    while (encode(page, least).result != 0) ++least;
    EXPECT_TRUE(least == whole.length || least == whole.length + 1) << width;
    const Coded tooSmall = encode(page, least - 1);
    EXPECT_EQ(tooSmall.error, 14900);
    EXPECT_EQ(tooSmall.length, 0);
    EXPECT_EQ(encode(page, least).bytes, whole.bytes);
  }
  EXPECT_EQ(encode({8, 8, Bytes(8)}, 3).error, 14900) << "eight rows fill a byte: U is 2";
  EXPECT_EQ(encode({8, 8, Bytes(8)}, 4).error, 14900);
  EXPECT_EQ(encode({8, 8, Bytes(8)}, 5).length, 4);
}

TEST(G4, BadArguments) {
  Bytes byte(1, 0x55);
  int rows = 7, error = 0, length = 0, capacity = 1;
  const auto dec = [&](const unsigned char* src, int n, std::vector<int> size, unsigned char* dst) {
    return CCITT_G4_dec(src, n, size.empty() ? nullptr : size.data(), dst, rows, error);
  };
  const auto enc = [&](const unsigned char* src, std::vector<int> size, int room, unsigned char* dst) {
    capacity = room;
    return CCITT_G4_enc(src, size.empty() ? nullptr : size.data(), capacity, dst, length, error);
  };
  unsigned char* const p = byte.data();
  for (const std::vector<int>& size :
       {std::vector<int>{0, 1}, {1, 0}, {-5, 1}, {1, INT_MIN}, {INT_MAX, 1}, {INT_MAX, INT_MAX}, {}}) {
    EXPECT_EQ(dec(p, 1, size, p), 3);
    EXPECT_EQ(error, 8122);
    EXPECT_EQ(enc(p, size, 1, p), 3);
    EXPECT_EQ(error, 8122);
  }
  EXPECT_EQ(dec(p, 1, {1, 1}, nullptr), 3);
  EXPECT_EQ(dec(nullptr, 1, {1, 1}, p), 2);
  EXPECT_EQ(dec(p, 0, {1, 1}, p), 2);
  EXPECT_EQ(error, 8122);
  EXPECT_EQ(enc(nullptr, {1, 1}, 1, p), 3);
  EXPECT_EQ(enc(p, {1, 1}, -1, p), 2);
  EXPECT_EQ(enc(p, {1, 1}, 1, nullptr), 2);
  EXPECT_EQ(error, 8122);
  EXPECT_EQ(byte[0], 0x55) << "untouched";
}

TEST(G4, EncodesInPlace) {
  std::mt19937 random(3);
  Bitmap page = makePage(64, 64, 2, random);
  const Coded apart = encode(page, static_cast<int>(page.bytes.size()));
  ASSERT_EQ(apart.result, 0);
  int size[2] = {64, 64}, capacity = static_cast<int>(page.bytes.size()), length = 0, error = 0;
  ASSERT_EQ(CCITT_G4_enc(page.bytes.data(), size, capacity, page.bytes.data(), length, error), 0);
  page.bytes.resize(static_cast<std::size_t>(length));
  EXPECT_EQ(page.bytes, apart.bytes);
}

}  // namespace
}  // namespace qav::test
