#include <QAVPrintEncoding.h>
#include <QAVPrtImageIterator.h>

#include "print/PrintReference.h"
#include "support/Test.h"

namespace qav::test {
namespace {

// One text for every block of 1024 bytes, as each has line breaks of its own.
std::string blockText(const Bytes& bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 1024)
    text += base85Text(bytes.data() + i, std::min<std::size_t>(1024, bytes.size() - i));
  return text;
}

Bytes maskBytes(const QAVPixelImage& image) {
  const auto [width, height] = extentOf(image);
  const int channels = image.GetFormat() + 1;
  Bytes bytes;
  for (int row = height - 1; row >= 0; --row) {
    for (int x = 0; x < width; ++x) {
      if (x % 8 == 0) bytes.push_back(0);
      if (image.GetPixelsToRead()[(row * width + x) * channels + channels - 1] == 0)
        bytes.back() = static_cast<std::uint8_t>(bytes.back() | 128 >> x % 8);
    }
  }
  return bytes;
}

template <class Dump>
std::string dumped(Dump dump, const QAVPixelImage* image, int argument) {
  RecordingStream stream;
  EXPECT_EQ(dump(stream, image, argument), 0);
  return stream.text();
}

std::string text85(const Bytes& bytes) {
  RecordingStream stream;
  DumpASCII85(stream, bytes.data(), bytes.size());
  return stream.text();
}

TEST(DumpASCII85, EveryLengthWithAndWithoutZeroGroups) {
  std::mt19937 random(85);
  atEveryLevel([&] {
    for (std::size_t count = 0; count < 9000; count += count < 900 ? 1 : 631) {
      Bytes bytes(count);
      fill(bytes.data(), count, Texture::Noise, random);
      ASSERT_EQ(text85(bytes), base85Text(bytes.data(), count)) << count;
      for (std::size_t group = 0; group + 4 <= count; group += 4)
        if (random() % (count % 2 ? 90 : 3) == 0) std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(group), 4, 0);
      ASSERT_EQ(text85(bytes), base85Text(bytes.data(), count)) << count << " with zero groups";
    }
    // Every quotient of the digits, at both ends of its range.
    Bytes steps;
    for (std::uint64_t value = 0; value < 1ull << 32; value += value % 2 ? 85 * 85 * 13 - 1 : 1)
      for (int shift = 24; shift >= 0; shift -= 8) steps.push_back(static_cast<std::uint8_t>(value >> shift));
    ASSERT_EQ(text85(steps), base85Text(steps.data(), steps.size()));
  });
}

TEST(DumpImage, IsTheSamplesInBlocksForEveryFormatAndRowOrder) {
  std::mt19937 random(82);
  atEveryLevel([&] {
    for (const auto format : kByteFormats) {
      for (const auto& [width, height] :
           {std::pair{1, 1}, {9, 1}, {32, 32}, {37, 61}, {130, 40}, {2000, 7}, {1, 1500}}) {
        const Image image = randomImage(width, height, format, random, kTextures[random() % 4]);
        for (const int bottomUp : {0, 1})
          ASSERT_EQ(dumped(DumpImage, image.get(), bottomUp), blockText(printSamples(*image, bottomUp, 1)))
              << width << " x " << height << " format " << format;
      }
    }
  });
}

TEST(DumpImage, OneZeroForEveryPixelWithoutBytes) {
  RecordingStream stream;
  EXPECT_EQ(DumpImage(stream, nullptr, 0), E_FAIL);
  EXPECT_EQ(stream.text(), "");
  EXPECT_EQ(dumped(DumpImage, makeImage(0, 7, RGB888).get(), 0), "");
  for (const auto format : {BitonalRuns, NoPixelStorage, RGBFloat})
    EXPECT_EQ(dumped(DumpImage, makeImage(8, 3, format).get(), 1), "zzzzzz");
}

TEST(DumpMask, IsOneBitForEveryTransparentPixel) {
  std::mt19937 random(1);
  atEveryLevel([&] {
    for (const auto format : {LA88, RGBA8888}) {
      for (int width = 1; width < 300; width += width < 140 ? 1 : 37) {
        const Image image = randomImage(width, 1 + width % 50, format, random);
        std::uint8_t* const pixels = image->GetPixelsToModify();
        for (std::size_t i = 0; i < byteCount(*image); ++i) pixels[i] = pixels[i] < 128 ? 0 : random() % 3 ? 1 : 0x80;
        ASSERT_EQ(dumped(DumpMask, image.get(), 1), blockText(maskBytes(*image))) << width << " format " << format;
      }
    }
  });
  // Every row begins a byte of its own.
  EXPECT_EQ(dumped(DumpMask, imageOf(9, 1, LA88, Bytes(18, 0)).get(), 0), text85({0xFF, 0x80}));
  EXPECT_EQ(dumped(DumpMask, makeImage(0, 5, LA88).get(), 0), "");
}

TEST(DumpMask, RefusesWhatHasNoTransparency) {
  RecordingStream stream;
  EXPECT_EQ(DumpMask(stream, nullptr, 0), E_FAIL);
  for (const auto format : kAllFormats) {
    if (format != LA88 && format != RGBA8888) {
      EXPECT_EQ(DumpMask(stream, makeImage(4, 4, format).get(), 0), E_FAIL);
    }
  }
  EXPECT_EQ(stream.text(), "");
}

TEST(PrtImageIterator, DeliversTheSamplesHoweverTheyAreTaken) {
  std::mt19937 random(3);
  for (int round = 0; round < 200; ++round) {
    const int mode = below(3, random), bottomUp = below(2, random);
    const Image image = randomImage(1 + round % 12, 1 + round / 20, kByteFormats[round % 4], random);
    const Bytes expected = printSamples(*image, bottomUp != 0, mode);
    QAVPrtImageIterator one(image.get(), bottomUp, mode), mixed(image.get(), bottomUp, mode);
    Bytes singles, pieces;
    std::uint8_t sample = 0, room[16];
    while (one.NextChar(sample)) singles.push_back(sample);
    for (;;) {
      if (random() % 2) {
        if (!mixed.NextChar(sample)) break;
        pieces.push_back(sample);
      } else {
        const auto taken = mixed.NextSamples({room, 1 + random() % 16});
        if (taken.empty()) break;
        pieces.insert(pieces.end(), taken.begin(), taken.end());
      }
    }
    ASSERT_EQ(singles, expected) << round;
    ASSERT_EQ(pieces, expected) << round;
    // At the end it stays there and leaves the sample alone.
    sample = 77;
    EXPECT_EQ(one.NextChar(sample) + one.NextPixel() + one.NextChar(sample), 0);
    EXPECT_EQ(sample, 77);
    EXPECT_TRUE(mixed.NextSamples(room).empty());
  }
}

TEST(PrtImageIterator, SkipsPixels) {
  const Image image = imageOf(2, 2, RGBA8888, {1, 2, 3, 255, 4, 5, 6, 126, 7, 8, 9, 127, 10, 11, 12, 0});
  QAVPrtImageIterator iterator(image.get(), 0, 1);
  std::uint8_t sample = 0;
  EXPECT_EQ(iterator.NextPixel() + iterator.NextPixel(), 2);
  EXPECT_TRUE(iterator.NextChar(sample) && sample == 255);
  EXPECT_EQ(iterator.NextPixel(), 1);
  EXPECT_TRUE(iterator.NextChar(sample) && sample == 7);
  EXPECT_EQ(iterator.NextPixel(), 1);
  EXPECT_EQ(iterator.NextPixel(), 0);
  EXPECT_EQ(QAVPrtImageIterator(nullptr, 0, 1).NextChar(sample) + QAVPrtImageIterator(nullptr, 1, 0).NextPixel(), 0);
  // Rows without pixels end at once, and pixels without bytes count without a value.
  const Image empty = makeImage(0, 5, L8), bitonal = makeImage(2, 1, BitonalRuns);
  EXPECT_EQ(QAVPrtImageIterator(empty.get(), 0, 1).NextChar(sample), 0);
  QAVPrtImageIterator valueless(bitonal.get(), 0, 1);
  EXPECT_EQ(valueless.NextChar(sample) + valueless.NextChar(sample) + valueless.NextChar(sample), 2);
  EXPECT_EQ(sample, 7);
}

TEST(PrtImageIterator, HasAnIdentity) {
  QAVPrtImageIterator iterator(nullptr, 0, 0);
  const QAVMetaClass* const meta = QAVPrtImageIterator::MetaObject();
  EXPECT_EQ(iterator.GetMetaObject(), meta);
  EXPECT_EQ(QAVMetaClass::Find("QAVPrtImageIterator"), meta);
  EXPECT_STREQ(meta->BaseName(), "QAVNull");
  EXPECT_STREQ(meta->FrameworkName(), "MultimediaRasterProcessor");
  EXPECT_STREQ(QAVPrtImageIterator::ClassName(), "QAVPrtImageIterator");
  EXPECT_EQ(QAVPrtImageIterator::ClassId(), meta->ClassId());
  EXPECT_EQ(iterator.IsAKindOf("QAVNull"), 1);
  EXPECT_EQ(QAVPrtImageIterator::CreateItself(), nullptr);
}

}  // namespace
}  // namespace qav::test
