#include <QAVBlockRasterFile.h>

#include "codecs/BlockBands.h"
#include "codecs/BlockDataType.h"
#include "codecs/block_file_writer.h"
#include "support/Files.h"
#include "support/Test.h"

namespace qav::test {
namespace {

struct Header {
  int result, kind;
  std::int64_t extent[2];
};

Header header(const Bytes& file) {
  const TemporaryFolder folder;
  Header h{0, 77, {-1, -1}};
  h.result = ripicrhd(folder.write("file", file).c_str(), &h.kind, h.extent);
  return h;
}

struct Picture {
  int result;
  Bytes bytes;
};

Picture read(const Bytes& file, std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height) {
  const TemporaryFolder folder;
  GuardedBytes out(static_cast<std::size_t>(std::max<std::int64_t>(0, width) * std::max<std::int64_t>(0, height) * 3));
  const std::int64_t origin[2] = {x, y}, size[2] = {width, height};
  int kind = 1;
  const int result = ripicrdt(folder.write("file", file).c_str(), &kind, origin, size, out.data());
  EXPECT_TRUE(out.guardsIntact());
  return {result, out.bytes()};
}

TEST(BlockRasterHeader, CodesAndExtents) {
  const auto image = [](std::int64_t type, std::int64_t bands, std::int64_t extra, int records) {
    BlockFileWriter file(2);
    file.image(640, 480, type, bands, extra);
    for (int i = 0; i < records; ++i) file.record({9});
    return file.entry(2, 0).bytes();  // found only behind exactly as many data records
  };
  Bytes cutInLength = BlockFileWriter(1).entry(3, 1).bytes();
  cutInLength.resize(cutInLength.size() + 79, 1);
  const struct {
    const char* what;
    Bytes file;
    int result;
    std::int64_t extent0;
  } cases[] = {
      {"no entries", BlockFileWriter(0).bytes(), 0, 0},
      {"negative number of entries", BlockFileWriter(-3).bytes(), 0, 0},
      {"grey of 8 bits: S + 1 records", image(20401, 4, 0, 5), 0, 640},
      {"one record too few", image(20401, 4, 0, 4), -1, 640},
      {"three channels with the extra records", image(10400, 4, 1, 14), 0, 640},
      {"three channels without them", image(10499, 4, 0, 12), 0, 640},
      {"16 bits, codes 0 to 9", image(9, 1, 0, 2), 0, 640},
      {"negative count of bands", image(10400, -7, 1, 0), 0, 640},
      {"three channels of 16 bits", image(10501, 0, 0, 1), -2, 640},
      {"code 10", image(10, 0, 0, 1), -2, 640},
      {"a thousand too many", image(21400, 0, 0, 1), -2, 640},
      {"negative code", image(-1, 0, 0, 1), -2, 640},
      {"huge count of bands", image(20400, INT32_MAX, 0, 3), -1, 640},
      {"other entries", BlockFileWriter(2).entry(7, -5).entry(0, 1).record({1}).bytes(), 0, 0},
      {"huge count of records", BlockFileWriter(1).entry(7, INT32_MAX).bytes(), -1, 0},
      {"the last image stays", BlockFileWriter(2).image(1, 2, 0, -1, 0).image(3, 4, 0, -1, 0).bytes(), 0, 3},
      {"length 0", BlockFileWriter(1).length(0).bytes(), -1, 0},
      {"lengths that pass over", BlockFileWriter(1).entry(5, 2).length(-100).record({1}).bytes(), -1, 0},
      {"smallest length", BlockFileWriter(2).length(INT32_MIN).bytes(), -1, 0},
      {"length block cut short", cutInLength, -1, 0},
      {"prologue cut short", Bytes(100), -1, 0},
      {"empty", {}, -1, 0},
  };
  for (const auto& c : cases) {
    const Header h = header(c.file);
    EXPECT_EQ(h.result, c.result) << c.what;
    EXPECT_EQ(h.kind, 1) << c.what;
    EXPECT_EQ(h.extent[0], c.extent0) << c.what;
  }
  int kind = 5;
  std::int64_t extent[2] = {8, 8};
  for (const char* path : {"/no/such/file", static_cast<const char*>(nullptr), "/tmp"}) {
    EXPECT_EQ(ripicrhd(path, &kind, extent), -5);
    EXPECT_EQ(kind, 5);
    EXPECT_EQ(extent[0], 0);
  }
}

TEST(BlockRasterData, TypeCodesBothWays) {
  for (int code = -100; code < 31000; ++code) {
    block::DataType type;
    const bool known = (code >= 0 && code <= 9) || code / 100 == 104 || code / 100 == 204 || code / 100 == 205;
    ASSERT_EQ(block::decodeDataType(code, type), known ? 0 : 1) << code;
    int back = -1;
    if (!known) continue;
    ASSERT_EQ(block::encodeDataType(type, back), type.description[1] == 8 ? 0 : 3) << code;
    if (back >= 0) {
      ASSERT_EQ(back, code);
    }
  }
}

// A picture of one channel, coded in bands.
struct Samples {
  int width, height, bytesPerSample;
  std::vector<unsigned> values;

  unsigned at(int x, int y) const { return values[static_cast<std::size_t>(y * width + x)]; }
};

Samples randomSamples(int width, int height, int bytesPerSample, std::mt19937& random) {
  Samples s{width, height, bytesPerSample, {}};
  unsigned value = 0;
  for (int i = 0; i < width * height; ++i) {
    if (random() % 3 == 0) value = bytesPerSample == 1 ? random() % 256 : random() % 65536;
    s.values.push_back(value);
  }
  return s;
}

Bytes codeBand(const Samples& s, int compression, int firstRow, int pastRow) {
  Bytes band;
  const int b = s.bytesPerSample, limit = compression == 7 ? 255 : 65535;
  const int first = firstRow * s.width, past = pastRow * s.width;
  if (compression == 2) {
    for (int y = firstRow; y < pastRow; ++y) {
      appendBigEndian(band, static_cast<unsigned>(s.width), 2);
      appendBigEndian(band, 1, 2);
      for (int x = 0; x < s.width; ++x) appendBigEndian(band, s.at(x, y), 1);
    }
    return band;
  }
  for (int i = first; i < past;) {
    int run = 1;
    // Compression 1 goes on from row to row.
    while (i + run < past && run < limit &&
           s.values[static_cast<std::size_t>(i + run)] == s.values[static_cast<std::size_t>(i)] &&
           (compression == 1 || (i + run) % s.width != 0))
      ++run;
    if (compression == 0) run = 1;
    if (compression != 0) appendBigEndian(band, static_cast<unsigned>(run), compression == 7 ? 1 : 2);
    appendBigEndian(band, s.values[static_cast<std::size_t>(i)], b);
    i += run;
  }
  return band;
}

int bandRows(int width, int height) { return std::max(1, std::min(262144 / std::max(1, width), height)); }

TEST(BlockRasterData, EveryRectangleOfEveryCompression) {
  const struct {
    int type, compression, bytesPerSample, channels;
  } kinds[] = {{20400, 0, 1, 1}, {20407, 7, 1, 1}, {10400, 0, 1, 3}, {10407, 7, 1, 3},
               {20501, 1, 2, 1}, {1, 1, 2, 1},     {20508, 8, 2, 1}, {20502, 2, 2, 1}};
  std::mt19937 random(6);
  for (const auto& kind : kinds) {
    for (const auto& [width, height] : {std::pair{1, 1}, {7, 5}, {300, 40}, {70000, 9}, {270000, 3}}) {
      std::vector<Samples> channels;
      for (int k = 0; k < kind.channels; ++k)
        channels.push_back(randomSamples(width, height, kind.bytesPerSample, random));
      // Rows of compression 2 hold the low byte alone, and at most 65534 of them.
      if (kind.compression == 2 && width > 60000) continue;
      const int rows = bandRows(width, height), bands = (height + rows - 1) / rows;
      BlockFileWriter file(2);
      file.entry(8, 1).record({7}).image(width, height, kind.type, bands, 0);
      if (kind.channels == 1) file.record({0});
      for (int band = 0; band < bands; ++band)
        for (const Samples& s : channels)
          file.record(codeBand(s, kind.compression, band * rows, std::min(height, (band + 1) * rows)));
      for (int round = 0; round < 8; ++round) {
        const int x = round == 0 ? 0 : below(width, random), y = round == 0 ? 0 : below(height, random);
        const int w = round == 0 ? width : 1 + below(width - x, random),
                  h = round == 0 ? height : 1 + below(height - y, random);
        const Picture picture = read(file.bytes(), x, y, w, h);
        ASSERT_EQ(picture.result, 0) << kind.type << " " << width;
        for (int i = 0; i < w * h * 3; ++i) {
          const Samples& s = channels[static_cast<std::size_t>(kind.channels == 3 ? i % 3 : 0)];
          const unsigned sample = s.at(x + i / 3 % w, y + i / 3 / w);
          // 16-bit samples give their high byte; compression 2 stores a zero there.
          const unsigned expected = kind.compression == 2 ? 0 : kind.bytesPerSample == 2 ? sample >> 8 : sample;
          ASSERT_EQ(picture.bytes[static_cast<std::size_t>(i)], expected) << kind.type << " " << width << " at " << i;
        }
      }
    }
  }
}

TEST(BlockRasterData, TheTableColoursGreySamples) {
  BlockFileWriter file(1);
  file.image(3, 1, 20400, 1, 2).record({10, 20, 30, 0, 40, 50, 60, 0, 70, 80, 90, 0}).record({1, 0, 2});
  EXPECT_EQ(read(file.bytes(), 0, 0, 3, 1).bytes, (Bytes{40, 50, 60, 10, 20, 30, 0, 0, 0}))
      << "two entries, whatever follows";
  BlockFileWriter cut(1);
  cut.image(2, 1, 20400, 1, 200).record({10, 20, 30, 0, 40}).record({1, 150});
  EXPECT_EQ(read(cut.bytes(), 0, 0, 2, 1).bytes, (Bytes{40, 0, 0, 0, 0, 0}));
}

TEST(BlockRasterData, ResultsOfBadRequestsAndFiles) {
  const auto grey = [](int type, int bands, int records) {
    BlockFileWriter file(1);
    file.image(9, 9, type, bands, 0);
    for (int i = 0; i < records; ++i) file.record(Bytes(81, 5));
    return file.bytes();
  };
  const Bytes good = grey(20400, 1, 2);
  const struct {
    const char* what;
    Bytes file;
    std::int64_t x, y, width, height;
    int result;
  } cases[] = {
      {"all of it", good, 0, 0, 9, 9, 0},
      {"the last index is inclusive", good, 9, 8, 1, 1, 0},
      {"one too many columns", good, 0, 0, 11, 1, -11},
      {"one too many rows", good, 3, 3, 1, 8, -11},
      {"origin left", good, -1, 0, 1, 1, -10},
      {"origin below", good, 0, 10, 1, 1, -10},
      {"empty rectangle", good, 0, 0, 0, 5, 0},
      {"negative rectangle", good, 0, 0, 5, INT64_MIN, 0},
      {"row 9 lies in a band that is not there", good, 0, 9, 1, 1, -4},
      {"no image entry", BlockFileWriter(1).entry(2, 0).bytes(), 0, 0, 1, 1, -4},
      {"no entries", BlockFileWriter(0).bytes(), 0, 0, 1, 1, -4},
      {"file ends before the band", grey(20400, 1, 1), 0, 0, 1, 1, -1},
      {"file ends before the table", grey(20400, 1, 0), 0, 0, 1, 1, -1},
      {"three channels, one missing", grey(10400, 1, 2), 0, 0, 1, 1, -1},
      {"unknown type", grey(10500, 1, 2), 0, 0, 1, 1, -2},
      {"unknown type before a bad origin", grey(10500, 1, 2), -1, 0, 1, 1, -2},
      {"compression 3", grey(3, 1, 2), 0, 0, 1, 1, -1},
      {"byte runs of 16 bits", grey(20507, 1, 2), 0, 0, 1, 1, -1},
      {"word runs of 8 bits", grey(20408, 1, 2), 0, 0, 1, 1, -1},
  };
  for (const auto& c : cases) EXPECT_EQ(read(c.file, c.x, c.y, c.width, c.height).result, c.result) << c.what;
  const std::int64_t origin[2] = {0, 0}, size[2] = {1, 1};
  Bytes out(3, 9);
  int kind = 0;
  const TemporaryFolder folder;
  const std::string path = folder.write("file", good);
  EXPECT_EQ(ripicrdt(path.c_str(), &kind, origin, size, out.data()), -5);
  EXPECT_EQ(out, Bytes(3, 0));
  EXPECT_EQ(ripicrdt(path.c_str(), nullptr, origin, size, out.data()), -5);
  kind = 1;
  EXPECT_EQ(ripicrdt("/no/such/file", &kind, origin, size, out.data()), -5);
  EXPECT_EQ(ripicrdt(path.c_str(), &kind, nullptr, size, out.data()), -10);
  EXPECT_EQ(ripicrdt(path.c_str(), &kind, origin, nullptr, out.data()), -11);
}

// The forms whose offsets do not count the bytes of a sample, worked out by hand.
TEST(BlockRasterData, BandsOfUnevenOffsets) {
  const struct {
    const char* what;
    int compression, sampleBytes;
    std::int64_t rowLength;
    block::BandRectangle rectangle;
    Bytes record, expected;
  } cases[] = {
      {"uncompressed words: rows overlap", 0, 2, 2, {1, 2, 1, 2}, {1, 2, 3, 4, 5, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 0, 0}},
      {"uncompressed, record cut short", 0, 1, 3, {2, 3, 1, 2}, {1, 2, 3, 4, 5}, {2, 3, 5, 0}},
      {"long runs of bytes: the sample is the next count", 1, 1, 4, {1, 4, 1, 1}, {0, 2, 0, 9}, {0, 9, 0, 9}},
      {"long runs of words from row to row", 1, 2, 2, {1, 2, 2, 2}, {0, 3, 1, 2, 0, 1, 3, 4}, {1, 2, 3, 4}},
      {"rows with margins; the second is empty, the third cut short",
       2,
       2,
       3,
       {1, 3, 1, 3},
       {0, 2, 0, 2, 7, 8, 255, 255, 0, 9, 255, 255, 1, 2, 3},
       {0, 0, 0, 7, 0, 8, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0}},
      {"rows with margins, two bytes a sample", 2, 1, 3, {1, 3, 1, 1}, {0, 3, 0, 1, 7, 8, 9}, {0, 7, 0}},
      {"short runs: a run past the row's end fills the column behind it", 7, 1, 3, {2, 4, 1, 1}, {5, 1}, {1, 1, 1}},
      {"short runs past the row's end are dropped", 7, 1, 3, {2, 3, 1, 2}, {5, 1, 0, 9, 1, 2, 2, 3}, {1, 1, 3, 3}},
      {"short runs cut short", 7, 1, 3, {1, 3, 1, 1}, {2, 4, 1}, {4, 4, 0}},
      {"nothing at all", 8, 2, 3, {1, 3, 1, 1}, {}, {0, 0, 0, 0, 0, 0}},
      {"no columns", 7, 1, 0, {1, 1, 1, 1}, {1, 1}, {0}},
  };
  for (const auto& c : cases) {
    GuardedBytes out(c.expected.size());
    std::fill_n(out.data(), out.size(), std::uint8_t{0});
    EXPECT_EQ(
        block::decodeBand(c.compression, c.rowLength, c.rectangle, c.sampleBytes, c.record, {out.data(), out.size()}),
        0);
    EXPECT_EQ(out.bytes(), c.expected) << c.what;
    EXPECT_TRUE(out.guardsIntact()) << c.what;
  }
}

}  // namespace
}  // namespace qav::test
