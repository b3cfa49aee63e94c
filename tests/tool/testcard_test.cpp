#include "TestCard.h"

#include <gtest/gtest.h>

#include "support/Images.h"

namespace qav::test {
namespace {

TEST(TestCard, IsThePictureThatIsShipped) {
  const Image shipped(QAVPixelImage::CreateFromFile(QAV_TEST_CARD, QAVReadOnly, 0));
  ASSERT_TRUE(shipped);
  const Image drawn = makeImage(testcard::kWidth, testcard::kHeight, RGBA8888);
  testcard::drawTestCard(*drawn);
  EXPECT_EQ(shipped->GetFormat(), RGBA8888);
  EXPECT_TRUE(bytesOf(*shipped) == bytesOf(*drawn)) << "qav_testcard docs/pictures/testcard.png makes it anew";
}

}  // namespace
}  // namespace qav::test
