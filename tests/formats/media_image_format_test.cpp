#include <QAVMMediaImageFormat.h>

#include "support/Test.h"

namespace qav::test {
namespace {

TEST(MediaImageFormat, BitsOfEveryFormat) {
  const auto bits = [](int f) { return QAVMMediaImageGetBitPerPixel(static_cast<QAVMMediaImagePixelFormat>(f)); };
  const int first[] = {1, 8, 16, 24, 32};
  for (int f = 0; f <= 21; ++f) EXPECT_EQ(bits(f), f < 5 ? first[f] : f < 18 ? 16 : f == 18 ? 24 : 32) << f;
  for (const int f : {22, -1, 1000, INT_MIN, INT_MAX}) EXPECT_EQ(bits(f), 0) << f;
}

TEST(MediaImageFormat, NumbersOfThePixelImagesFormats) {
  const int expected[] = {1, 2, 3, 4, 0};
  for (int f = -2; f < 16; ++f)
    EXPECT_EQ(QAVMMediaImageGetPixelFormat(static_cast<QAVPixelImageFormat>(f)), f >= 0 && f < 5 ? expected[f] : -1);
}

TEST(MediaImageFormat, SizesOfImages) {
  for (const QAVPixelImageFormat format : kByteFormats) {
    EXPECT_EQ(QAVMMediaImageGetBitmapSize(*makeImage(7, 5, format)), 35 * (format + 1));
    EXPECT_EQ(QAVMMediaImageGetBitmapSize(*makeImage(0, 5, format)), 0);
  }
  for (const QAVPixelImageFormat format : {NoPixelStorage, RGBFloat, RGBAFloat, RGB161616, RGBA16161616})
    EXPECT_EQ(QAVMMediaImageGetBitmapSize(*makeImage(7, 5, format)), 136) << format;
}

// An image that claims sizes no memory holds.
class ClaimingImage : public QAVPixelImage {
 public:
  ClaimingImage(QAVPixelImageFormat format, int width, int height, int runLength)
      : QAVPixelImage(1, 1, format), width_(width), height_(height), runLength_(runLength) {}
  void GetSize(int& width, int& height) const override {
    width = width_;
    height = height_;
  }
  int GetPixelsRunsLength(int) const override { return runLength_; }

 private:
  int width_, height_, runLength_;
};

TEST(MediaImageFormat, RunLengthsAddUpAndSizesThatDoNotFitSaturate) {
  const Image runs = makeImage(9, 3, BitonalRuns);
  const int lengths[] = {5, 0, 7};
  int kept[3];
  for (int y = 0; y < 3; ++y) kept[y] = std::exchange(runs->GetPixelsRunsLength(y), lengths[y]);
  EXPECT_EQ(QAVMMediaImageGetBitmapSize(*runs), 148);
  for (int y = 0; y < 3; ++y) runs->GetPixelsRunsLength(y) = kept[y];

  const struct {
    QAVPixelImageFormat format;
    int width, height, runLength, expected;
  } cases[] = {
      {RGBA8888, INT_MAX, INT_MAX, 0, INT_MAX},
      {L8, 46341, 46341, 0, INT_MAX},
      {L8, 46340, 46340, 0, 46340 * 46340},
      {RGB888, 1 << 15, 1 << 15, 0, INT_MAX},
      {BitonalRuns, 8, 3, INT_MAX, INT_MAX},
      {BitonalRuns, 8, 1, INT_MAX - 136, INT_MAX},
      {BitonalRuns, 8, 1, INT_MAX - 137, INT_MAX - 1},
      {BitonalRuns, 8, 0, 5, 136},
      {BitonalRuns, 8, -4, 5, 136},
      {RGBFloat, INT_MAX, INT_MAX, 0, 136},
  };
  for (const auto& c : cases)
    EXPECT_EQ(QAVMMediaImageGetBitmapSize(*Image(new ClaimingImage(c.format, c.width, c.height, c.runLength))),
              c.expected)
        << c.format << " " << c.width << "x" << c.height;
}

}  // namespace
}  // namespace qav::test
