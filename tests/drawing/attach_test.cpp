#include "support/Test.h"

#include <QAVMMIHelperRGBA.h>

namespace qav::test {
namespace {

// Everything at once, with coordinates in and around any image.
void drawEverything(QAVMMIHelperRGBA& helper) {
  constexpr int polygon[] = {-5, -5, 9, -2, 3, 9};
  constexpr int counts[] = {3};
  helper.Clear(9);
  helper.Plot(0, 0, 9);
  helper.HLine(0, -5, 5, 9);
  helper.HLine(0, 5, -5, 9);
  helper.Line(-5, -5, 5, 5, 9, QAVMMIBrushPixel);
  helper.Line(-5, 0, 5, 0, 9, QAVMMIBrushRound7);
  helper.Rectangle(-5, -5, 5, 5, 9, 0);
  helper.Rectangle(-5, 5, 5, -5, 9, 1);
  helper.Circle(0, 0, 2147483647, 9, 1);
  helper.Ellipse(0, 0, 3, 2, 9, 0);
  helper.Fill(0, 0, 9);
  helper.FillArea(1, counts, polygon, 9);
  EXPECT_EQ(helper.Pick(0, 0), 0u);
}

TEST(Attach, RefusesWhatCannotBeDrawnIntoAndDetaches) {
  const Image drawable = makeImage(4, 4, RGBA8888), rgb = makeImage(4, 4, RGB888), none = makeImage(0, 0, RGBA8888);
  const Image locked(new ReadOnlyImage(4, 4, RGBA8888));
  for (QAVPixelImage* refused : {rgb.get(), none.get(), locked.get()}) {
    const auto before = bytesOf(*drawable);
    QAVMMIHelperRGBA helper(*drawable);
    EXPECT_EQ(helper.Attach(*refused), E_FAIL);
    drawEverything(helper);
    EXPECT_EQ(bytesOf(*drawable), before);
    const Image source = makeImage(2, 2, RGBA8888);
    EXPECT_EQ(helper.Blend(*source, 0, 0), E_FAIL);
    EXPECT_EQ(helper.Attach(*drawable), S_OK);
    helper.Plot(1, 2, 0x01020304u);
    EXPECT_EQ(bytesOf(*drawable)[4 * (2 * 4 + 1)], 4);
    drawable->GetPixelsToModify()[4 * (2 * 4 + 1)] = 0;
    QAVMMIHelperRGBA(*refused).Clear(1);
  }
}

TEST(Attach, AcceptsAnImageWithOneEmptySideAndDrawsNothing) {
  for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}}) {
    const Image image = makeImage(width, height, RGBA8888), source = makeImage(20, 20, RGBA8888);
    QAVMMIHelperRGBA helper(*image);
    EXPECT_EQ(helper.Attach(*image), S_OK);
    drawEverything(helper);
    EXPECT_EQ(helper.Blend(*source, -5, -5), S_OK);
  }
}

TEST(Attach, ToAnotherImageDrawsThereAndCopiesItToTheFirst) {
  std::mt19937 random(3);
  const Image first = randomImage(3, 3, RGBA8888, random), second = randomImage(6, 2, RGBA8888, random);
  const Image third = randomImage(6, 2, RGBA8888, random);
  QAVMMIHelperRGBA helper(*first);
  const unsigned char* const firstBuffer = first->GetPixelsToRead();
  EXPECT_EQ(helper.Attach(*first), S_OK);
  EXPECT_EQ(first->GetPixelsToRead(), firstBuffer);
  const auto before = bytesOf(*second);
  EXPECT_EQ(helper.Attach(*second), S_OK);
  helper.Plot(5, 1, 0xFFFFFFFFu);
  EXPECT_EQ(bytesOf(*first), before);
  EXPECT_EQ(bytesOf(*second)[4 * 11], 255);
  // Only the image of the constructor cannot be blended in.
  EXPECT_EQ(helper.Blend(*first, 0, 0), E_FAIL);
  EXPECT_EQ(helper.Blend(*second, 0, 0), S_OK);
  EXPECT_EQ(helper.Blend(*third, 0, 0), S_OK);
}

}  // namespace
}  // namespace qav::test
