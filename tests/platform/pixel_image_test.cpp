#include "support/Test.h"

namespace qav::test {
namespace {

TEST(PixelImage, FormatsAnswerWithTheirSizes) {
  struct {
    QAVPixelImageFormat format;
    int bytes, bits;
    bool byteBuffer, floats, words;
  } const formats[] = {{L8, 1, 8, true, false, false},
                       {LA88, 2, 16, true, false, false},
                       {RGB888, 3, 24, true, false, false},
                       {RGBA8888, 4, 32, true, false, false},
                       {BitonalRuns, 0, 1, false, false, false},
                       {NoPixelStorage, 0, 0, false, false, false},
                       {RGBFloat, 12, 96, false, true, false},
                       {RGBAFloat, 16, 128, false, true, false},
                       {RGB161616, 6, 48, false, false, true},
                       {RGBA16161616, 8, 64, false, false, true},
                       {static_cast<QAVPixelImageFormat>(99), 0, 0, false, false, false}};
  for (const auto& f : formats)
    for (const int side : {0, 3}) {
      QAVPixelImage image(side, side, f.format);
      EXPECT_EQ(image.GetBytesPerPixel(), f.bytes) << f.format;
      EXPECT_EQ(image.GetBitsPerPixel(), f.bits) << f.format;
      EXPECT_EQ(image.GetPixelsToRead() != nullptr, f.byteBuffer) << f.format;
      EXPECT_EQ(image.GetPixelsToModify(), image.GetPixelsToRead());
      EXPECT_EQ(image.GetFloatingPixelsToRead() != nullptr, f.floats) << f.format;
      EXPECT_EQ(image.GetFloatingPixelsToModify(), image.GetFloatingPixelsToRead());
      EXPECT_EQ(image.GetSixteenBitPixelsToRead() != nullptr, f.words) << f.format;
      EXPECT_EQ(bytesOf(image), std::vector<std::uint8_t>(f.byteBuffer ? byteCount(image) : 0));
    }
}

TEST(PixelImage, ImpossibleSizesThrowAndGiveTheBufferBack) {
  for (const auto& size :
       {std::pair(-1, 4), std::pair(4, -1), std::pair(INT_MIN, INT_MIN), std::pair(INT_MAX, INT_MAX)})
    EXPECT_THROW(QAVPixelImage(size.first, size.second, RGBAFloat), std::bad_alloc);
  QAVPixelImage image(2, 1, L8);
  image.GetPixelsToModify()[1] = 9;
  EXPECT_EQ(image.ResetPixels(-1, 1, L8, new unsigned char[1], QAVDeallocatePixelsByImage), E_FAIL);
  EXPECT_EQ(bytesOf(image), (std::vector<std::uint8_t>{0, 9}));
}

TEST(PixelImage, RowsOutsideTheImageHaveHarmlessSlots) {
  QAVPixelImage runs(4, 2, BitonalRuns), floats(4, 2, RGBFloat), bytes(4, 2, L8);
  for (const int row : {-1, 2, INT_MAX, INT_MIN}) {
    runs.GetPixelsRunsLength(row) = 7;
    EXPECT_EQ(std::as_const(runs).GetPixelsRunsLength(row), 0);
    EXPECT_EQ(runs.GetPixelsRuns(row), nullptr);
    EXPECT_EQ(floats.GetFloatingRow(row), nullptr);
  }
  EXPECT_EQ(bytes.GetPixelsRuns(0), nullptr);
  EXPECT_EQ(bytes.GetFloatingRow(0), nullptr);
  EXPECT_EQ(floats.GetFloatingRow(1), floats.GetFloatingPixelsToRead() + 12);
}

TEST(PixelImage, CopiesAreDeep) {
  QAVPixelImage runs(20, 3, L8);
  std::fill_n(runs.GetPixelsToModify() + 20, 20, static_cast<unsigned char>(255));
  ASSERT_EQ(runs.ConvertToFormat(BitonalRuns), S_OK);
  QAVPixelImage copy(1, 1, RGBFloat);
  copy = runs;
  EXPECT_NE(copy.GetPixelsRuns(0), runs.GetPixelsRuns(0));
  ASSERT_EQ(runs.ReverseRowOrder(), S_OK);
  ASSERT_EQ(copy.ExpandRuns(0), S_OK);
  EXPECT_EQ(copy.GetPixelsToRead()[0], 0);
  EXPECT_EQ(copy.GetPixelsToRead()[20], 255);
  EXPECT_EQ(copy.ReverseRowOrder(), E_FAIL);
  QAVPixelImage& self = copy;
  const unsigned char* const buffer = copy.GetPixelsToRead();
  copy = self;
  EXPECT_EQ(copy.GetPixelsToRead(), buffer);
}

TEST(PixelImage, BuffersBelongToWhomTheFlagSays) {
  unsigned char mine[6] = {1, 2, 3, 4, 5, 6};
  {
    QAVPixelImage image(2, 1, RGB888, mine, QAVDeallocatePixelsByCaller);
    image.GetPixelsToModify()[0] = 9;
    EXPECT_EQ(mine[0], 9);
    const QAVPixelImage copy(image);
    EXPECT_NE(copy.GetPixelsToRead(), mine);
    EXPECT_EQ(image.ResetPixels(6, 1, L8, mine, QAVDeallocatePixelsByCaller), S_OK);
  }
  // What the image owns and does not need is freed, its own buffer only once: the sanitizers watch this.
  QAVPixelImage image(2, 1, BitonalRuns, new unsigned char[2], QAVDeallocatePixelsByImage);
  EXPECT_EQ(image.ResetPixels(3, 1, L8, new unsigned char[3]{7, 8, 9}, QAVDeallocatePixelsByImage), S_OK);
  EXPECT_EQ(image.ResetPixels(1, 1, RGB888, image.GetPixelsToModify(), QAVDeallocatePixelsByImage), S_OK);
  EXPECT_EQ(bytesOf(image), (std::vector<std::uint8_t>{7, 8, 9}));
  EXPECT_EQ(image.ResetPixels(-1, 1, L8, image.GetPixelsToModify(), QAVDeallocatePixelsByImage), E_FAIL);
  EXPECT_EQ(bytesOf(image), (std::vector<std::uint8_t>{7, 8, 9}));
}

TEST(PixelImage, TransparencySetsAlphaAlone) {
  QAVPixelImage grey(2, 1, LA88), colour(1, 1, RGBA8888), deep(1, 1, RGBA16161616), floats(1, 1, RGBAFloat),
      opaque(1, 1, RGB888);
  for (QAVPixelImage* image : {&grey, &colour, &deep, &floats, &opaque}) image->SetTransparency(51);
  EXPECT_EQ(bytesOf(grey), (std::vector<std::uint8_t>{0, 51, 0, 51}));
  EXPECT_EQ(bytesOf(colour), (std::vector<std::uint8_t>{0, 0, 0, 51}));
  EXPECT_EQ(deep.GetSixteenBitPixelsToRead()[3], 51 * 257);
  EXPECT_EQ(floats.GetFloatingPixelsToRead()[3], 0.2f);
  EXPECT_EQ(bytesOf(opaque), (std::vector<std::uint8_t>{0, 0, 0}));
}

}  // namespace
}  // namespace qav::test
