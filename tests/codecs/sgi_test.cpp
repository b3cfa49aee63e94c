#include <QAVSGIImageFile.h>

#include "support/Files.h"
#include "support/Test.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qav::test {
namespace {

Bytes header(bool coded, std::size_t width, std::size_t height, std::size_t channels) {
  Bytes bytes{0x01, 0xDA, coded, 1, 0, 3};
  for (const std::size_t value : {width, height, channels}) appendBigEndian(bytes, value, 2);
  bytes.resize(512);
  return bytes;
}

struct CodedRow {
  Bytes coded;
  std::optional<std::size_t> start = std::nullopt, length = std::nullopt;  // where the tables do not tell the truth
};

/// A run-length file with the rows of channel 0, then those of channel 1, and so on.
Bytes codedFile(std::size_t width, std::size_t height, std::size_t channels, const std::vector<CodedRow>& rows) {
  Bytes bytes = header(true, width, height, channels), data;
  const std::size_t entries = height * channels;
  for (const CodedRow& row : rows) {
    appendBigEndian(bytes, row.start.value_or(512 + 8 * entries + data.size()), 4);
    data.insert(data.end(), row.coded.begin(), row.coded.end());
  }
  for (const CodedRow& row : rows) appendBigEndian(bytes, row.length.value_or(row.coded.size()), 4);
  bytes.insert(bytes.end(), data.begin(), data.end());
  return bytes;
}

Image readPicture(const Bytes& file) {
  const TemporaryFolder folder;
  return Image(ReadRGB(QAVString(folder.write("picture.rgb", file))));
}

void expectPicture(const Bytes& file, int width, int height, QAVPixelImageFormat format, const Bytes& pixels) {
  const Image image = readPicture(file);
  ASSERT_TRUE(image);
  EXPECT_EQ(extentOf(*image), std::pair(width, height));
  EXPECT_EQ(image->GetFormat(), format);
  EXPECT_EQ(qav::test::bytesOf(*image), pixels);
}

Bytes joined(Bytes bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
  return bytes;
}

TEST(ReadRGB, VerbatimFiles) {
  expectPicture(joined(header(false, 2, 1, 1), {10, 20}), 2, 1, L8, {10, 20});
  expectPicture(joined(header(false, 2, 1, 3), {1, 2, 3, 4, 5, 6}), 2, 1, RGB888, {1, 3, 5, 2, 4, 6});
  expectPicture(joined(header(false, 1, 2, 4), {1, 2, 3, 4, 5, 6, 7, 8}), 1, 2, RGBA8888, {1, 3, 5, 7, 2, 4, 6, 8});
  // Three channels are read of any other number, and what is not there is 0.
  expectPicture(joined(header(false, 2, 1, 2), {1, 2, 3, 4}), 2, 1, RGB888, {1, 3, 0, 2, 4, 0});
  expectPicture(joined(header(false, 1, 1, 5), {1, 2, 3, 4, 5}), 1, 1, RGB888, {1, 2, 3});
  expectPicture(joined(header(false, 2, 2, 1), {9}), 2, 2, L8, {9, 0, 0, 0});
  expectPicture(header(false, 3, 0, 4), 3, 0, RGBA8888, {});
  expectPicture({0x01, 0xDA}, 0, 0, RGB888, {});
}

TEST(ReadRGB, RunLengthFiles) {
  expectPicture(codedFile(5, 1, 1, {{{0x82, 'a', 'b', 0x03, 'c', 0x00}}}), 5, 1, L8, {'a', 'b', 'c', 'c', 'c'});
  const struct {
    CodedRow row;
    Bytes expected;
  } cases[] = {
      {{{0x02, 7, 0x00, 0x02, 9}}, {7, 7, 0, 0}},                      // ended early
      {{{0x7F, 7, 0x01, 9}}, {7, 7, 7, 7}},                            // a run longer than the row
      {{{0x01, 1, 0xFF, 2, 3, 4, 5, 6, 7}}, {1, 2, 3, 4}},             // a literal longer than the row
      {{{0x84, 1, 2}}, {1, 2, 0, 0}},                                  // cut short by the file
      {{{0x84, 1, 2, 3, 4}, std::nullopt, 3}, {1, 2, 0, 0}},           // cut short by the length
      {{{0x02, 5, 0x02}}, {5, 5, 0, 0}},                               // no byte to repeat
      {{{0x84, 1, 2, 3, 4}, std::nullopt, 0}, {0, 0, 0, 0}},           // no length
      {{{0x84, 1, 2, 3, 4}, 0xFFFFFFFF, 0xFFFFFFFF}, {0, 0, 0, 0}},    // far outside the file
      {{{0x84, 1, 2, 3, 4}, std::nullopt, 0xFFFFFFFF}, {1, 2, 3, 4}},  // more than there is
      {{{0x00}, 0, 5}, {0xDA, 1, 0, 0}},                               // in the header itself
  };
  for (const auto& c : cases) expectPicture(codedFile(4, 1, 1, {c.row}), 4, 1, L8, c.expected);
  // Rows share their bytes, in any order, and channels that have no table are 0.
  const CodedRow shared{{0x02, 6}, 512 + 32, 2};
  expectPicture(codedFile(2, 2, 2, {shared, shared, {{}, 0, 0}, shared}), 2, 2, RGB888,
                {6, 0, 0, 6, 0, 0, 6, 6, 0, 6, 6, 0});
}

TEST(ReadRGB, RefusesWhatIsNoPicture) {
  EXPECT_FALSE(readPicture({}));
  EXPECT_FALSE(readPicture({0x01, 0xDB, 0, 1}));
  EXPECT_FALSE(readPicture(header(false, 65535, 65535, 1)));
  EXPECT_FALSE(readPicture(header(false, 32768, 16384, 4)));
  // Run-length tables that the file cannot hold, whatever picture they announce.
  EXPECT_FALSE(readPicture(header(true, 20000, 30000, 3)));
  Bytes almost = codedFile(4, 2, 3, std::vector<CodedRow>(6, {{}, 0, 0}));
  EXPECT_TRUE(readPicture(almost));
  almost.pop_back();
  EXPECT_FALSE(readPicture(almost));

  EXPECT_EQ(ReadRGB("/nowhere/at all.rgb"), nullptr);
  EXPECT_EQ(ReadRGB("/tmp"), nullptr);
  const TemporaryFolder folder;
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(ReadRGB(QAVString(pipe)), nullptr);
  EXPECT_EQ(WriteRGB(QAVString(pipe), makeImage(1, 1, L8).get()), 1);
  const int reading = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_EQ(WriteRGB(QAVString(pipe), imageOf(1, 1, L8, {8}).get()), 0);
  Bytes piped(600);
  ASSERT_EQ(::read(reading, piped.data(), piped.size()), 515);
  EXPECT_EQ(piped[514], 8);
  ::close(reading);
}

int lowestFreeDescriptor() {
  const int descriptor = ::dup(0);
  ::close(descriptor);
  return descriptor;
}

TEST(ReadRGB, LeavesOnlyAFileWithAWrongMagicNumberOpen) {
  const int before = lowestFreeDescriptor();
  readPicture(header(false, 1, 1, 1));
  readPicture(header(false, 65535, 65535, 1));
  EXPECT_EQ(lowestFreeDescriptor(), before);
  readPicture({'n', 'o'});
  EXPECT_NE(lowestFreeDescriptor(), before);
}

TEST(WriteRGB, HeaderAndPlanes) {
  const struct {
    Image image;
    Bytes start, planes;
  } cases[] = {
      {imageOf(1, 1, LA88, {7, 9}), {0x01, 0xDA, 0, 1, 0, 3, 0, 1, 0, 1, 0, 4}, {7, 7, 7, 9}},
      {imageOf(1, 1, L8, {8}), {0x01, 0xDA, 0, 1, 0, 2, 0, 1, 0, 1, 0, 3}, {8, 8, 8}},
      {imageOf(1, 2, RGB888, {1, 2, 3, 4, 5, 6}), {0x01, 0xDA, 0, 1, 0, 2, 0, 1, 0, 2, 0, 3}, {1, 4, 2, 5, 3, 6}},
      {imageOf(2, 0, RGBA8888, {}), {0x01, 0xDA, 0, 1, 0, 3, 0, 2, 0, 0, 0, 4}, {}},
      {makeImage(2, 1, RGBFloat), {0x01, 0xDA, 0, 1, 0, 2, 0, 2, 0, 1, 0, 3}, {0, 0, 0, 0, 0, 0}},
  };
  // One file again and again, so that shorter ones replace longer ones too.
  const TemporaryFolder folder;
  const std::string path = folder.path("picture.rgb");
  for (const auto& c : cases) {
    ASSERT_EQ(WriteRGB(QAVString(path), c.image.get()), 0);
    Bytes expected = c.start;
    expected.resize(512);
    expected[27] = 0xFF;
    expected[40] = 'Q';
    expected[41] = 'V';
    EXPECT_EQ(readFile(path), joined(expected, c.planes));
  }
}

TEST(WriteRGB, Failures) {
  const Image image = makeImage(3, 3, L8);
  EXPECT_EQ(WriteRGB("/nowhere/at all.rgb", image.get()), 1);
  EXPECT_EQ(WriteRGB("/tmp", image.get()), 1);
  EXPECT_EQ(WriteRGB("/dev/full", image.get()), 2);
  EXPECT_EQ(WriteRGB("/dev/null", nullptr), -1);
  EXPECT_EQ(WriteRGB("/dev/null", makeImage(3, 3, NoPixelStorage).get()), -1);
  const Image pixelless(new QAVPixelImage(3, 3, RGB888, nullptr, QAVDeallocatePixelsByCaller));
  EXPECT_EQ(WriteRGB("/dev/null", pixelless.get()), -1);
}

TEST(WriteRGB, IsReadBackAtEveryLevel) {
  std::mt19937 random(93);
  atEveryLevel([&] {
    for (const auto& [width, height] :
         {std::pair{1, 1}, {15, 3}, {16, 16}, {67, 31}, {700, 500}, {1, 65535}, {65535, 2}}) {
      for (const auto format : {RGB888, RGBA8888}) {
        const Image image = randomImage(width, height, format, random);
        const TemporaryFolder folder;
        const std::string path = folder.path("picture.rgb");
        ASSERT_EQ(WriteRGB(QAVString(path), image.get()), 0);
        expectPicture(readFile(path), width, height, format, qav::test::bytesOf(*image));
      }
    }
  });
}

}  // namespace
}  // namespace qav::test
