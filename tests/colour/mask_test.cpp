#include <QAV5X5ColorMatrix.h>
#include <QAVMMediaImageProcessor.h>

#include "support/Test.h"

namespace qav::test {
namespace {

Image masked(const QAVPixelImage& source, const QAVPixelImage& mask, int type) {
  return Image(QAVMMediaImageProcessor::Mask(source, mask, static_cast<QAVMMIMaskType>(type), nullptr));
}

// The luminance as the fourth element of a product of matrix and vector.
class LuminanceByMatrix {
 public:
  LuminanceByMatrix() {
    QAVRawColldouble values;
    for (int i = 0; i < 25; ++i) values.Append(i == 15 ? 0.2125 : i == 16 ? 0.7154 : i == 17 ? 0.0721 : i == 24);
    EXPECT_EQ(matrix_.Initialize(values), 0);
    for (int i = 0; i < 5; ++i) out_.Append(i == 4);
  }
  double factor(const std::uint8_t* mask) {
    if (std::equal(mask, mask + 4, last_.begin())) return factor_;
    std::copy_n(mask, 4, last_.begin());
    for (int k = 0; k < 4; ++k) in_.Append(mask[k]);
    in_.Append(1.0);
    matrix_.MatMul(in_, out_);
    const double factor = (in_[4] / 255) * (out_[4] / 255);
    in_.RemoveAll();
    return factor_ = factor < 0 ? 0 : factor > 1 ? 1 : factor;
  }

 private:
  QAV5X5ColorMatrix matrix_;
  QAVRawColldouble in_, out_;
  std::array<std::uint8_t, 4> last_{};
  double factor_ = 0;
};

void expectLuminanceMask(const QAVPixelImage& source, const QAVPixelImage& mask) {
  LuminanceByMatrix matrix;
  auto expected = bytesOf(source);
  const auto weights = bytesOf(mask);
  for (std::size_t i = 0; i < expected.size(); i += 4)
    expected[i + 3] = static_cast<std::uint8_t>(expected[i + 3] * matrix.factor(&weights[i]));
  atEveryLevel([&] {
    const Image result = masked(source, mask, 0);
    ASSERT_TRUE(result);
    ASSERT_TRUE(bytesOf(*result) == expected);
  });
}

// Greys are where exact products of fractions of 255 stand next to a whole number.
TEST(Mask, EveryGreyAndBothAlphas) {
  const Image source = makeImage(256, 65536, RGBA8888), mask = makeImage(256, 65536, RGBA8888);
  unsigned char *to = source->GetPixelsToModify(), *weight = mask->GetPixelsToModify();
  for (unsigned i = 0; i < 1u << 24; ++i, to += 4, weight += 4) {
    to[3] = static_cast<std::uint8_t>(i);
    std::fill_n(weight, 3, static_cast<std::uint8_t>(i >> 8));
    weight[3] = static_cast<std::uint8_t>(i >> 16);
  }
  expectLuminanceMask(*source, *mask);
}

TEST(Mask, RandomColours) {
  std::mt19937 random(71);
  for (const auto& [width, height] : {std::pair{700, 700}, {1, 1}, {7, 3}, {33, 1}, {65, 9}}) {
    const Image source = randomImage(width, height, RGBA8888, random);
    for (const Texture texture : kTextures)
      expectLuminanceMask(*source, *randomImage(width, height, RGBA8888, random, texture));
  }
}

TEST(Mask, AnyOtherTypeKeepsAlphaWhereTheMaskHasSome) {
  std::mt19937 random(72);
  atEveryLevel([&] {
    for (const int type : {1, 2, -1}) {
      const Image source = randomImage(67, 5, RGBA8888, random);
      const Image mask = randomImage(67, 5, RGBA8888, random, Texture::Extremes);
      mask->GetPixelsToModify()[3] = 1;
      auto expected = bytesOf(*source);
      for (std::size_t i = 3; i < expected.size(); i += 4)
        if (mask->GetPixelsToRead()[i] == 0) expected[i] = 0;
      EXPECT_EQ(bytesOf(*masked(*source, *mask, type)), expected) << type;
    }
  });
}

TEST(Mask, KnownPixels) {
  const struct {
    std::uint8_t alpha;
    std::vector<std::uint8_t> mask;
    int expected;
  } cases[] = {{200, {255, 255, 255, 255}, 200},
               {255, {255, 255, 255, 128}, 128},
               {255, {0, 0, 0, 255}, 0},
               // The factors round to a little less than a fifth together.
               {5, {153, 153, 153, 85}, 0}};
  for (const auto& c : cases) {
    const Image source = imageOf(1, 1, RGBA8888, {1, 2, 3, c.alpha}), mask = imageOf(1, 1, RGBA8888, c.mask);
    EXPECT_EQ(bytesOf(*masked(*source, *mask, 0)),
              (std::vector<std::uint8_t>{1, 2, 3, static_cast<std::uint8_t>(c.expected)}));
  }
}

class Unreadable : public QAVPixelImage {
 public:
  using QAVPixelImage::QAVPixelImage;
  const unsigned char* GetPixelsToRead() const override { return nullptr; }
};

TEST(Mask, NullUnlessBothAreReadableRGBAOfOneSize) {
  const Image good = makeImage(4, 3, RGBA8888);
  for (const int type : {0, 1}) {
    for (const QAVPixelImageFormat format : kAllFormats) {
      if (format == RGBA8888) continue;
      EXPECT_FALSE(masked(*makeImage(4, 3, format), *good, type)) << format;
      EXPECT_FALSE(masked(*good, *makeImage(4, 3, format), type)) << format;
    }
    EXPECT_FALSE(masked(*good, *makeImage(3, 3, RGBA8888), type));
    EXPECT_FALSE(masked(*good, *makeImage(4, 4, RGBA8888), type));
    EXPECT_FALSE(masked(*good, *Image(new Unreadable(4, 3, RGBA8888)), type));
    const Image empty = masked(*makeImage(0, 2, RGBA8888), *makeImage(0, 2, RGBA8888), type);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->GetFormat(), RGBA8888);
  }
}

}  // namespace
}  // namespace qav::test
