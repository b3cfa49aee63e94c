#include "ImageFiles.h"
#include "platform/AnyImage.h"
#include "support/Files.h"
#include "support/Test.h"

#include <malloc.h>
#include <sys/stat.h>

namespace qav::test {
namespace {

struct Seed {
  const char* type;
  Bytes bytes;
};

class HostileFile : public testing::Test {
 protected:
  void SetUp() override {
    std::mt19937 random(1);
    for (const QAVPixelImageFormat format : {L8, RGBA8888, BitonalRuns, RGBFloat, RGB161616})
      for (const char* type : {"TIFF", "PNG", "JPEG"}) {
        const Image image(randomImage(9, 7, RGBA8888, random, Texture::Smooth)->CreateConvertedCopy(format));
        const std::string path = folder_.path("seed");
        ASSERT_EQ(image->WriteToFile(path, type), S_OK);
        seeds_.push_back({type, readFile(path)});
        ASSERT_TRUE(Image(QAVPixelImage::CreateFromFile(path, QAVReadOnly, 0)));
      }
    testing::internal::CaptureStderr();
  }
  void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the readers print nothing"; }

  // The picture in the bytes, or null. It must not depend on what the memory held before.
  Image read(const Bytes& bytes) {
    const std::string path = folder_.write("hostile", bytes);
    mallopt(M_PERTURB, 0x33);
    Image image(QAVPixelImage::CreateFromFile(path, QAVReadOnly, 0));
    mallopt(M_PERTURB, 0xCC);
    const Image again(QAVPixelImage::CreateFromFile(path, QAVReadOnly, 0));
    mallopt(M_PERTURB, 0);
    EXPECT_EQ(!image, !again);
    if (image && again) {
      EXPECT_EQ(memoryOf(*image), memoryOf(*again));
    }
    return image;
  }

  TemporaryFolder folder_;
  std::vector<Seed> seeds_;
};

TEST_F(HostileFile, NoPrefixGivesHalfAPicture) {
  for (const Seed& seed : seeds_) {
    const Bytes whole = bytesOf(*Image(read(seed.bytes)->CreateConvertedCopy(RGBA8888)));
    for (std::size_t length = 0; length < seed.bytes.size(); ++length) {
      const Image image = read(Bytes(seed.bytes.begin(), seed.bytes.begin() + static_cast<std::ptrdiff_t>(length)));
      // The last bytes of a TIFF say whether another picture follows; without them this one is still whole.
      const bool needless = std::strcmp(seed.type, "TIFF") == 0 && length + 4 >= seed.bytes.size();
      ASSERT_TRUE(needless || !image) << seed.type << " cut at " << length << " of " << seed.bytes.size();
      if (image) {
        ASSERT_EQ(bytesOf(*Image(image->CreateConvertedCopy(RGBA8888))), whole);
      }
    }
  }
}

// Every bit turned over, and every second byte with the three behind it at its extremes.
TEST_F(HostileFile, DamageIsSurvived) {
  for (const Seed& seed : seeds_) {
    Bytes damaged = seed.bytes;
    // The headers of a JPEG are long tables.
    for (std::size_t bit = 0; bit < damaged.size() * 8; bit += std::strcmp(seed.type, "JPEG") == 0 ? 5 : 1) {
      damaged[bit / 8] = static_cast<std::uint8_t>(damaged[bit / 8] ^ 1u << (bit % 8));
      read(damaged);
      damaged[bit / 8] = seed.bytes[bit / 8];
    }
    for (std::size_t at = 0; at < seed.bytes.size(); at += 2)
      for (const std::uint8_t value : Bytes{0x00, 0x7F, 0xFF}) {
        damaged = seed.bytes;
        std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(at), std::min<std::size_t>(4, damaged.size() - at),
                    value);
        read(damaged);
      }
  }
}

TEST_F(HostileFile, ThingsThatAreNoPictures) {
  const std::string text = "This is a text file, long enough to hold a header.\n";
  EXPECT_FALSE(read({}));
  EXPECT_FALSE(read(Bytes(text.begin(), text.end())));
  EXPECT_FALSE(read(Bytes(1000)));
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  for (const std::string& path : {folder_.path("missing"), folder_.path("pipe"), folder_.path(""), std::string()})
    EXPECT_EQ(QAVPixelImage::CreateFromFile(path, QAVReadOnly, 0), nullptr) << path;
}

void put(Bytes& bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

// A small TIFF that claims a size, a compression and a number of rows in its one strip, which starts at 8.
Bytes tiffThatClaims(std::uint32_t width, std::uint32_t height, std::uint32_t compression, std::uint32_t rowsPerStrip,
                     std::uint32_t stripBytes, std::uint32_t bits) {
  const std::uint32_t fields[][2] = {{256, width}, {257, height}, {258, bits},         {259, compression}, {262, 1},
                                     {273, 8},     {277, 1},      {278, rowsPerStrip}, {279, stripBytes}};
  Bytes bytes{'I', 'I', 42, 0};
  put(bytes, 40, 4);
  bytes.resize(40, 0x80);
  put(bytes, std::size(fields), 2);
  for (const auto& [tag, value] : fields) {
    put(bytes, tag, 2);
    put(bytes, 4, 2);
    put(bytes, 1, 4);
    put(bytes, value, 4);
  }
  put(bytes, 0, 4);
  return bytes;
}

TEST_F(HostileFile, SizesBeyondTheFileAreRefused) {
  EXPECT_TRUE(read(tiffThatClaims(4, 8, 1, 8, 32, 8))) << "an honest one is read";
  const std::uint32_t extremes[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  for (const std::uint32_t compression : {1u, 3u, 4u, 5u, 7u, 8u, 32773u, 50000u})
    for (const std::uint32_t width : extremes)
      for (const std::uint32_t height : extremes)
        for (const std::uint32_t rows : extremes)
          for (const std::uint32_t bits : {1u, 8u, 32u}) {
            const Image image = read(tiffThatClaims(width, height, compression, rows, rows, bits));
            EXPECT_TRUE(!image || (width == 1 && height == 1));
          }
  EXPECT_FALSE(read(tiffThatClaims(1000, 1000, 1, 1000, 1000000, 8)));

  Bytes png = seeds_[1].bytes;
  ASSERT_EQ(png[1], 'P');
  png[16] = png[20] = 0x7F;  // width and height; the checksum is wrong now, too
  EXPECT_FALSE(read(png));
}

TEST(PlausiblePicture, ComparesBitsWithTheFile) {
  struct {
    std::uint64_t width, height, bits, fileBytes;
    bool expected;
  } const cases[] = {{1, 1, 8, 100, true},
                     {0, 1, 8, 100, false},
                     {2048, 100, 8, 100, true},
                     {2049, 100, 8, 100, false},
                     {2048 * 8, 100, 1, 100, true},
                     {0x80000000, 1, 1, 1u << 31, false},
                     {0x7FFFFFFF, 0x7FFFFFFF, 128, 1u << 30, false},
                     {1, 1, 8, 0, false}};
  for (const auto& c : cases)
    EXPECT_EQ(isPlausiblePicture(c.width, c.height, c.bits, c.fileBytes), c.expected) << c.width;
}

}  // namespace
}  // namespace qav::test
