#include <QAVMMIResize.h>
#include <QAVMMPIPixelColorSpec.h>
#include <QAVMMediaImageProcessor.h>

#include "support/Test.h"

namespace qav::test {
namespace {

/// Records what is asked of it.
class WatchedImage : public QAVPixelImage {
 public:
  using QAVPixelImage::QAVPixelImage;
  QAVPixelImage* CreateResizedCopy(int width, int height, QAVMMIResampleType kind) override {
    asked = {width, height, kind};
    return refuse ? nullptr : QAVPixelImage::CreateResizedCopy(width, height, kind);
  }
  std::vector<int> asked;
  bool refuse = false;
};

unsigned references(QAVBaseUnknown& object) {
  object.AddRef();
  return object.Release();
}

Image fit(QAVPixelImage& image, int width, int height, QAVMMPIPixelColor* background = nullptr) {
  return Image(QAVMMIResize::CenterAndFitInRectangleByKeepingRatio(image, width, height, background));
}

QAVMMPIPixelColor colourOf(QAVPixelImageFormat format, std::array<float, 4> channels) {
  QAVMMPIPixelColorSpec* const spec = QAVMMPIPixelColorSpec::CreatePixelColorSpec(format, nullptr);
  QAVMMPIPixelColor colour(spec, channels);
  spec->Release();
  return colour;
}

TEST(Fitting, SizesAndPlaces) {
  const struct {
    int w, h, width, height, fittedW, fittedH, x, y;
  } cases[] = {{200, 100, 100, 100, 100, 50, 0, 25},
               {100, 200, 100, 100, 50, 100, 25, 0},
               {1000, 1, 10, 10, 10, 1, 0, 4},
               {1, 700, 5, 9, 1, 9, 2, 0},
               {40, 30, 21, 16, 21, 15, 0, 0},
               {40, 30, 80, 60, 80, 60, 0, 0},
               {3, 2, 2, 2, 2, 1, 0, 0}};
  for (const auto& [w, h, width, height, fittedW, fittedH, x, y] : cases) {
    WatchedImage image(w, h, RGB888);
    std::fill_n(image.GetPixelsToModify(), byteCount(image), std::uint8_t{200});
    const Image result = fit(image, width, height);
    ASSERT_TRUE(result) << w << " x " << h;
    EXPECT_EQ(image.asked, (std::vector<int>{fittedW, fittedH, 3})) << w << " x " << h;
    EXPECT_EQ(references(image), 1u);
    EXPECT_EQ(references(*result), 1u);
    const auto bytes = bytesOf(*result);
    for (int row = 0; row < height; ++row)
      for (int column = 0; column < width; ++column) {
        const bool inside = column >= x && column < x + fittedW && row >= y && row < y + fittedH;
        ASSERT_EQ(bytes[static_cast<std::size_t>(row * width + column) * 3], inside ? 200 : 0)
            << w << " x " << h << " at " << column << ", " << row;
      }
  }
}

TEST(Fitting, TheImageItselfWhenItFits) {
  WatchedImage image(30, 20, LA88);
  const Image same = fit(image, 30, 20);
  EXPECT_EQ(same.get(), &image);
  EXPECT_EQ(references(image), 2u);
  QAVMMPIPixelColor background = colourOf(LA88, {9, 9});
  EXPECT_EQ(fit(image, 30, 20, &background).get(), &image) << "no background is looked for where none shows";
  EXPECT_TRUE(image.asked.empty());
}

TEST(Fitting, Backgrounds) {
  const struct {
    QAVPixelImageFormat format;
    std::array<float, 4> channels;
    int width, height;
    int alpha;  // of the margin; -1 where there is no result
  } cases[] = {{RGBA8888, {0, 0, 0, 0}, 20, 20, 0},
               {RGBA8888, {0, 0, 0, 77}, 20, 20, 77},
               {RGBA8888, {0, 1, 0, 0}, 20, 20, -1},
               {RGB888, {0, 0, 0}, 20, 20, 0},
               {RGB888, {0, 0, 1}, 20, 20, -1},
               {LA88, {0, 9}, 20, 20, -1},
               {L8, {0}, 20, 20, 0},
               {RGBAFloat, {0, 0, 0, 0}, 20, 20, -1},
               {RGBA8888, {0, 0, 0, 0}, 15, 10, -1}};
  for (const auto& [format, channels, width, height, alpha] : cases) {
    WatchedImage image(30, 20, RGB888);
    QAVMMPIPixelColor background = colourOf(format, channels);
    QAVMMPIPixelColorSpec* const spec = background.GetColorSpec();
    const Image result = fit(image, width, height, &background);
    EXPECT_EQ(references(image), 1u);
    EXPECT_EQ(references(*spec), 2u);
    spec->Release();
    ASSERT_EQ(result != nullptr, alpha >= 0) << format;
    if (result) {
      EXPECT_EQ(result->GetFormat(), format);
      EXPECT_EQ(bytesOf(*result)[static_cast<std::size_t>(result->GetBytesPerPixel()) - 1], alpha);
    }
    // The same shape in another format is asked for at 0 x 0.
    if (width == 15) {
      EXPECT_EQ(image.asked, (std::vector<int>{0, 0, 3}));
    }
  }
  QAVMMPIPixelColor none;
  EXPECT_FALSE(fit(*makeImage(30, 20, RGB888), 20, 20, &none));
}

TEST(Fitting, Refusals) {
  for (const auto format : {BitonalRuns, NoPixelStorage, RGBFloat, RGBAFloat, RGBA16161616,
                            static_cast<QAVPixelImageFormat>(14), static_cast<QAVPixelImageFormat>(-1)})
    EXPECT_FALSE(fit(*makeImage(4, 4, format), 8, 9)) << format;
  const Image image = makeImage(4, 4, RGB888);
  for (const auto& [w, h] : {std::pair{1, 8}, {8, 1}, {0, 0}, {-5, 8}, {8, std::numeric_limits<int>::min()}})
    EXPECT_FALSE(fit(*image, w, h)) << w << " x " << h;
  EXPECT_FALSE(fit(*makeImage(0, 4, RGB888), 8, 8));
  EXPECT_FALSE(fit(*makeImage(4, 0, RGB888), 8, 8));
  WatchedImage refusing(4, 4, RGB888);
  refusing.refuse = true;
  EXPECT_FALSE(fit(refusing, 8, 8));
  EXPECT_FALSE(fit(refusing, 8, 9));
  EXPECT_EQ(references(refusing), 1u);
  for (int kind = -1; kind < 5; ++kind)
    EXPECT_EQ(QAVMMediaImageProcessor::CreateResampled(*image, 8, 8, static_cast<QAVMMIResampleType>(kind),
                                                       [](float) { FAIL(); }),
              nullptr);
}

}  // namespace
}  // namespace qav::test
