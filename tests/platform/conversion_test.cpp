#include "BitonalRows.h"
#include "PixelConversion.h"
#include "platform/AnyImage.h"
#include "support/Test.h"

namespace qav::test {
namespace {

// One pixel by the definition, channel by channel: what its four channels R, G, B, A are in a format. Written in
// exact arithmetic; grey sits in R, G and B alike.
using Pixel = std::array<long double, 4>;

long double fullScale(QAVPixelImageFormat format) {
  const int bytes = pixelLayoutOf(format).bytesPerChannel;
  return bytes == 4 ? 1.0L : bytes == 2 ? 65535.0L : 255.0L;
}

bool isGrey(QAVPixelImageFormat format) { return format == L8 || format == LA88 || format == BitonalRuns; }
bool isFloat(QAVPixelImageFormat format) { return format == RGBFloat || format == RGBAFloat; }

long double rescale(long double v, QAVPixelImageFormat from, QAVPixelImageFormat to) {
  if (isFloat(from) && isFloat(to)) return v;
  if (isFloat(to)) return static_cast<float>(v) / static_cast<float>(fullScale(from));
  if (std::isnan(v)) return 0;
  const long double unit = v / fullScale(from);
  return std::floor(std::min(1.0L, std::max(0.0L, unit)) * fullScale(to) + 0.5L);
}

Pixel converted(const Pixel& pixel, QAVPixelImageFormat from, QAVPixelImageFormat to) {
  Pixel result;
  const QAVPixelImageFormat colour = isGrey(to) ? RGBA8888 : to;
  for (std::size_t c = 0; c < 4; ++c) result[c] = rescale(pixel[c], from, colour);
  if (isGrey(to) && !isGrey(from)) {
    const int luma = (2126 * static_cast<int>(result[0]) + 7152 * static_cast<int>(result[1]) +
                      722 * static_cast<int>(result[2]) + 5000) /
                     10000;
    result[0] = result[1] = result[2] = luma;
  }
  if (to == BitonalRuns) result[0] = result[1] = result[2] = result[0] < 128 ? 0 : 255;
  if (!pixelLayoutOf(from).hasAlpha || !pixelLayoutOf(to).hasAlpha) result[3] = fullScale(to);
  return result;
}

long double sampleAt(const QAVPixelImage& image, std::size_t i) {
  if (image.GetFloatingPixelsToRead()) return image.GetFloatingPixelsToRead()[i];
  if (image.GetSixteenBitPixelsToRead()) return image.GetSixteenBitPixelsToRead()[i];
  return image.GetPixelsToRead()[i];
}

std::vector<Pixel> pixelsOf(const QAVPixelImage& image) {
  const auto [width, height] = extentOf(image);
  const QAVPixelImageFormat format = image.GetFormat();
  const auto channels = static_cast<std::size_t>(pixelLayoutOf(format).channels);
  std::vector<Pixel> pixels;
  std::vector<unsigned char> row(static_cast<std::size_t>(width));
  for (int y = 0; y < height; ++y) {
    if (format == BitonalRuns) readBitonalRow(image, y, width, row.data());
    for (std::size_t x = 0; x < row.size(); ++x) {
      const std::size_t at = (static_cast<std::size_t>(y) * row.size() + x) * channels;
      Pixel pixel{0, 0, 0, fullScale(format)};
      for (std::size_t c = 0; c < 3; ++c)
        pixel[c] = format == BitonalRuns ? row[x] : sampleAt(image, at + (isGrey(format) ? 0 : c));
      if (pixelLayoutOf(format).hasAlpha) pixel[3] = sampleAt(image, at + channels - 1);
      pixels.push_back(pixel);
    }
  }
  return pixels;
}

bool same(const Pixel& a, const Pixel& b) {
  for (std::size_t c = 0; c < 4; ++c)
    if (a[c] != b[c] && !(std::isnan(a[c]) && std::isnan(b[c]))) return false;
  return true;
}

TEST(Conversion, EveryPairOfFormatsFollowsTheDefinition) {
  std::mt19937 random(1);
  for (const QAVPixelImageFormat from : kAllFormats)
    for (const QAVPixelImageFormat to : kAllFormats) {
      if (from == NoPixelStorage || to == NoPixelStorage) continue;
      const Image source = randomImageOf(from, 1500, 3, random);  // longer than the block that is converted at once
      const Image result(source->CreateConvertedCopy(to));
      ASSERT_TRUE(result);
      ASSERT_EQ(result->GetFormat(), to);
      const std::vector<Pixel> in = pixelsOf(*source), out = pixelsOf(*result);
      ASSERT_EQ(in.size(), out.size());
      for (std::size_t i = 0; i < in.size(); ++i)
        ASSERT_TRUE(same(out[i], converted(in[i], from, to))) << from << "->" << to << " pixel " << i;
    }
}

TEST(Conversion, EveryColourAndEverySampleValue) {
  std::vector<std::uint8_t> colours(256 * 3), grey(256);
  for (int r = 0; r < 256; ++r)
    for (int g = 0; g < 256; ++g) {
      for (int b = 0; b < 256; ++b) {
        std::uint8_t* pixel = &colours[static_cast<std::size_t>(b) * 3];
        pixel[0] = static_cast<std::uint8_t>(r), pixel[1] = static_cast<std::uint8_t>(g),
        pixel[2] = static_cast<std::uint8_t>(b);
      }
      convertPixels(RGB888, colours.data(), L8, grey.data(), 256);
      for (int b = 0; b < 256; ++b)
        ASSERT_EQ(grey[static_cast<std::size_t>(b)], (2126 * r + 7152 * g + 722 * b + 5000) / 10000);
    }
  std::vector<std::uint16_t> words(65536 * 3), back(65536 * 3);
  std::vector<float> floats(65536 * 3);
  std::vector<std::uint8_t> bytes(65536 * 3);
  for (std::size_t i = 0; i < words.size(); ++i) words[i] = static_cast<std::uint16_t>(i);
  convertPixels(RGB161616, words.data(), RGBFloat, floats.data(), 65536);
  convertPixels(RGBFloat, floats.data(), RGB161616, back.data(), 65536);
  EXPECT_EQ(words, back);
  convertPixels(RGB161616, words.data(), RGB888, bytes.data(), 65536);
  for (std::size_t i = 0; i < bytes.size(); ++i) ASSERT_EQ(bytes[i], std::lround(words[i] / 257.0));
}

TEST(Conversion, RefusesWhatHoldsNoPixelsAndLeavesTheImageAlone) {
  for (const QAVPixelImageFormat bad : {NoPixelStorage, static_cast<QAVPixelImageFormat>(6),
                                        static_cast<QAVPixelImageFormat>(14), static_cast<QAVPixelImageFormat>(-1)}) {
    const Image image = imageOf(1, 1, L8, {77});
    EXPECT_EQ(image->ConvertToFormat(bad), E_FAIL);
    EXPECT_EQ(image->GetFormat(), L8);
    EXPECT_EQ(image->GetPixelsToRead()[0], 77);
    EXPECT_EQ(Image(new QAVPixelImage(1, 1, bad))->CreateConvertedCopy(L8), nullptr);
    EXPECT_EQ(Image(new QAVPixelImage(1, 1, bad))->ConvertToFormat(bad), E_FAIL);
  }
  EXPECT_EQ(QAVPixelImage(2, 2, L8, nullptr, QAVDeallocatePixelsByImage).CreateConvertedCopy(RGB888), nullptr);
}

TEST(Conversion, EmptyImagesConvert) {
  for (const auto& size : {std::pair(0, 0), std::pair(0, 5), std::pair(5, 0)})
    for (const QAVPixelImageFormat to : kAllFormats) {
      if (to == NoPixelStorage) continue;
      QAVPixelImage image(size.first, size.second, RGB888);
      EXPECT_EQ(image.ConvertToFormat(to), S_OK);
      // From runs the way to colours has a row of grey in between.
      EXPECT_EQ(image.ConvertToFormat(RGB888), S_OK);
    }
}

TEST(Conversion, ExpandRunsGivesBlackAndWhite) {
  QAVPixelImage image(10, 2, BitonalRuns);
  EXPECT_EQ(image.ExpandRuns(0), S_OK);
  EXPECT_EQ(bytesOf(image), std::vector<std::uint8_t>(20, 255)) << "a new image is white";
  EXPECT_EQ(image.ExpandRuns(0), E_FAIL);
}

}  // namespace
}  // namespace qav::test
