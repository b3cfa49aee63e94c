#include <QAVMMediaImageProcessor.h>

#include "kernels/GreyConversion.h"
#include "support/Test.h"

namespace qav::test {
namespace {

using Processor = QAVMMediaImageProcessor;

std::uint8_t greyOf(int type, unsigned r, unsigned g, unsigned b) {
  const struct {
    unsigned r, g, b, of;
  } weights[] = {{2125, 7154, 465, 10000}, {0, 1, 0, 1},        {1, 1, 1, 3}, {}, {2989, 5866, 1145, 10000},
                 {2125, 7154, 465, 10000}, {222, 707, 57, 1000}};
  if (type == 3) return static_cast<std::uint8_t>((std::max({r, g, b}) + std::min({r, g, b})) / 2);
  const auto& w = weights[type];
  return static_cast<std::uint8_t>((w.r * r + w.g * g + w.b * b) / w.of);
}

HRESULT grey(QAVPixelImage& image, int type, unsigned char apply = 1) {
  return Processor::Grey(image, static_cast<QAVMMIGreyType>(type), nullptr, apply);
}

TEST(Grey, EveryColourByEveryFormula) {
  constexpr int side = 4096;
  Image colours[2] = {makeImage(side, side, RGBA8888), makeImage(side, side, RGB888)};
  for (unsigned i = 0; i < side * side; ++i) {
    for (unsigned k = 0; k < 3; ++k) {
      colours[0]->GetPixelsToModify()[4 * i + k] = static_cast<std::uint8_t>(i >> 8 * k);
      colours[1]->GetPixelsToModify()[3 * i + k] = static_cast<std::uint8_t>(i >> 8 * k);
    }
    colours[0]->GetPixelsToModify()[4 * i + 3] = static_cast<std::uint8_t>(i * 7);
  }
  for (const int type : {0, 1, 2, 3, 4, 6}) {
    std::vector<std::uint8_t> expected(side * side);
    for (unsigned i = 0; i < side * side; ++i) expected[i] = greyOf(type, i & 255, i >> 8 & 255, i >> 16);
    atEveryLevel([&] {
      const Image image = copyOf(*colours[type % 2]);
      ASSERT_EQ(grey(*image, type), S_OK);
      ASSERT_EQ(image->GetFormat(), L8);
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), image->GetPixelsToRead())) << type;
    });
  }
}

TEST(Grey, EveryLengthWithinItsBuffers) {
  std::mt19937 random(51);
  atEveryLevel([&] {
    for (std::size_t pixels = 0; pixels < 150; ++pixels) {
      for (const int channels : {3, 4}) {
        // The colours end where the buffer ends: reading further is for the sanitizers to find.
        const auto stride = static_cast<std::size_t>(channels);
        std::vector<std::uint8_t> source(pixels * stride), expected(pixels);
        fill(source.data(), source.size(), Texture::Noise, random);
        GuardedBytes result(pixels, pixels % 7);
        const kernels::GreyWeights weights = {2989, 5866, 1145, 10000};
        kernels::greyConversionKernels().weighted(source.data(), pixels, channels, weights, result.data());
        for (std::size_t i = 0; i < pixels; ++i)
          expected[i] = greyOf(4, source[i * stride], source[i * stride + 1], source[i * stride + 2]);
        ASSERT_EQ(result.bytes(), expected) << pixels << " pixels of " << channels;
        ASSERT_TRUE(result.guardsIntact());
      }
    }
  });
}

TEST(Grey, TypeFiveIsTypeZeroAndFormulasAreKnown) {
  const struct {
    int type;
    std::vector<std::uint8_t> colour;
    int expected;
  } cases[] = {{0, {255, 255, 255}, 248}, {5, {255, 255, 255}, 248}, {4, {255, 255, 255}, 255},
               {6, {255, 255, 255}, 251}, {3, {10, 200, 30}, 105},   {2, {1, 1, 2}, 1}};
  for (const auto& c : cases) {
    const Image image = imageOf(1, 1, RGB888, c.colour);
    EXPECT_EQ(grey(*image, c.type), S_OK);
    EXPECT_EQ(bytesOf(*image).at(0), c.expected) << c.type;
  }
}

TEST(Grey, RefusalsInTheirOrder) {
  for (const QAVPixelImageFormat format : kAllFormats) {
    const bool never = format == L8 || format == LA88 || format == NoPixelStorage;
    const bool colour = format == RGB888 || format == RGBA8888;
    for (const int type : {0, 6, 7, 8, -1}) {
      const Image image = makeImage(6, 4, format), readOnly(new ReadOnlyImage(6, 4, format));
      EXPECT_EQ(grey(*image, type, 0), never ? E_FAIL : S_OK) << format;
      EXPECT_EQ(grey(*readOnly, type, 0), never ? E_FAIL : S_OK) << format;
      EXPECT_EQ(image->GetFormat(), format);
      if (format == BitonalRuns) continue;
      EXPECT_EQ(grey(*image, type), !colour ? E_FAIL : type > 6 || type < 0 ? E_NOTIMPL : S_OK) << format << type;
      EXPECT_EQ(image->GetFormat(), colour && type >= 0 && type <= 6 ? L8 : format);
      EXPECT_EQ(grey(*readOnly, type), E_FAIL) << format;
    }
  }
  const Image empty = makeImage(0, 3, RGB888);
  EXPECT_EQ(grey(*empty, 4), S_OK);
  EXPECT_EQ(empty->GetFormat(), L8);
}

// Keeps what ResetPixels is given, and answers as it is told.
class ResettingImage : public QAVPixelImage {
 public:
  ResettingImage(HRESULT answer, int width, int height, QAVPixelImageFormat format)
      : QAVPixelImage(width, height, format), answer_(answer) {}
  HRESULT ResetPixels(int width, int height, QAVPixelImageFormat format, unsigned char* pixels,
                      QAVDeallocatePixels deallocate) override {
    ++calls;
    given.reset(pixels);
    EXPECT_EQ(width, 5);
    EXPECT_EQ(height, 3);
    EXPECT_EQ(format, L8);
    EXPECT_EQ(deallocate, 0);
    return answer_;
  }
  int calls = 0;
  std::unique_ptr<unsigned char[]> given;

 private:
  HRESULT answer_;
};

TEST(Grey, TheArrayBelongsToTheImageEvenWhenItFails) {
  std::mt19937 random(52);
  for (const HRESULT answer : {S_OK, E_FAIL, HRESULT{1}}) {
    auto* const image = new ResettingImage(answer, 5, 3, RGB888);
    const Image owner(image);
    fill(image->GetPixelsToModify(), 45, Texture::Noise, random);
    EXPECT_EQ(grey(*image, 2), answer == 0 ? S_OK : E_FAIL);
    ASSERT_EQ(image->calls, 1);
    // Were it freed as well, this would read freed memory and the test's own release would be the second.
    for (std::size_t i = 0; i < 15; ++i) {
      const unsigned char* p = image->GetPixelsToRead() + 3 * i;
      EXPECT_EQ(image->given[i], greyOf(2, p[0], p[1], p[2]));
    }
  }
}

class ExpandingImage : public QAVPixelImage {
 public:
  using QAVPixelImage::QAVPixelImage;
  HRESULT ExpandRuns(int argument) override {
    calls.push_back(argument);
    return fails ? HRESULT{1} : QAVPixelImage::ExpandRuns(argument);
  }
  bool fails = false;
  std::vector<int> calls;
};

TEST(Grey, RunImagesAreExpandedAndTypeSevenSmoothsThem) {
  std::mt19937 random(53);
  const Image picture = randomImage(19, 13, L8, random, Texture::Extremes);
  for (const int type : {0, 6, 7, 8, -3}) {
    auto* const runs = new ExpandingImage(19, 13, L8);
    const Image owner(runs);
    std::copy_n(picture->GetPixelsToRead(), 19 * 13, runs->GetPixelsToModify());
    ASSERT_EQ(runs->ConvertToFormat(BitonalRuns), S_OK);
    runs->fails = true;
    EXPECT_EQ(grey(*runs, type), E_FAIL);
    runs->fails = false;
    EXPECT_EQ(grey(*runs, type), S_OK);
    EXPECT_EQ(runs->calls, (std::vector<int>{0, 0}));
    const Image expected = copyOf(*picture);
    if (type == 7) {
      ASSERT_EQ(Processor::Filter(*expected, QAVMMIFilterSmoothCentre, 1, nullptr, 1), S_OK);
    }
    EXPECT_EQ(bytesOf(*runs), bytesOf(*expected)) << type;
  }
}

}  // namespace
}  // namespace qav::test
