#include "kernels/Blend.h"
#include "drawing/Drawing.h"
#include "support/Test.h"

namespace qav::test {
namespace {

std::uint8_t mixed(int s, int d, int alpha) {
  const float a = static_cast<float>(alpha) / 255.0f;
  const float v = static_cast<float>(s) + (static_cast<float>(d) - static_cast<float>(s)) * a;
  return static_cast<std::uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
}

// The one-pixel loop, in order, which also says what happens where the rows share memory.
void plainRow(std::uint8_t* target, const std::uint8_t* source, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t s[4] = {source[4 * i], source[4 * i + 1], source[4 * i + 2], source[4 * i + 3]};
    for (std::size_t k = 0; k < 3; ++k) target[4 * i + k] = mixed(s[k], target[4 * i + k], s[3]);
  }
}

// A pixel for every target value; red, green and blue take their source values from three thirds of 0..255.
TEST(Blend, EveryValueOnEveryValueWithEveryWeight) {
  constexpr int kThird = 86;
  const auto sourceOf = [](int s, int k) { return std::min(s + kThird * k, 255); };
  std::vector<std::uint8_t> expected;
  expected.reserve(std::size_t{256} * kThird * 256 * 3);
  for (int a = 0; a < 256; ++a)
    for (int s = 0; s < kThird; ++s)
      for (int d = 0; d < 256; ++d)
        for (int k = 0; k < 3; ++k) expected.push_back(mixed(sourceOf(s, k), d, a));
  atEveryLevel([&] {
    std::vector<std::uint8_t> source(1024), target(1024);
    const std::uint8_t* next = expected.data();
    for (int a = 0; a < 256; ++a) {
      for (int s = 0; s < kThird; ++s) {
        for (std::size_t d = 0; d < 256; ++d) {
          for (std::size_t k = 0; k < 3; ++k) {
            source[4 * d + k] = static_cast<std::uint8_t>(sourceOf(s, static_cast<int>(k)));
            target[4 * d + k] = static_cast<std::uint8_t>(d);
          }
          source[4 * d + 3] = static_cast<std::uint8_t>(a);
          target[4 * d + 3] = static_cast<std::uint8_t>(~d);
        }
        kernels::blendKernels().blendRow(target.data(), source.data(), 256);
        for (std::size_t d = 0; d < 256; ++d, next += 3) {
          ASSERT_EQ(std::memcmp(&target[4 * d], next, 3), 0) << "alpha " << a << " source " << s << " target " << d;
          ASSERT_EQ(target[4 * d + 3], static_cast<std::uint8_t>(~d));
        }
      }
    }
  });
}

// Few alphas, so that ties of the rounding meet every place of a vector, and every distance of shared memory.
TEST(Blend, RowsOfEveryLengthApartAndOverlapping) {
  std::mt19937 random(9);
  constexpr std::uint8_t alphas[] = {0, 128, 153, 136, 255, 165};
  atEveryLevel([&] {
    for (int distance = -300; distance <= 300; distance += distance > -70 && distance < 70 ? 1 : 7) {
      const std::size_t count = random() % 90;
      GuardedBytes memory(4 * count + 301, random() % 4);
      fill(memory.data(), memory.size(), Texture::Extremes, random);
      if (random() % 2)
        for (std::size_t i = 0; i < memory.size(); ++i)
          memory.data()[i] = static_cast<std::uint8_t>(i % 4 == 3 ? alphas[random() % 6] : random());
      auto expected = memory.bytes();
      const auto target = static_cast<std::size_t>(std::max(distance, 0));
      const auto source = static_cast<std::size_t>(std::max(-distance, 0));
      plainRow(expected.data() + target, expected.data() + source, count);
      kernels::blendKernels().blendRow(memory.data() + target, memory.data() + source, count);
      ASSERT_EQ(memory.bytes(), expected) << count << " pixels, " << distance << " bytes apart";
      ASSERT_TRUE(memory.guardsIntact());
    }
  });
}

TEST(Blend, PlacesAndClipsOrRefuses) {
  std::mt19937 random(10);
  constexpr int kWidth = 21, kHeight = 13, kSourceWidth = 10, kSourceHeight = 8;
  const Image source = randomImage(kSourceWidth, kSourceHeight, RGBA8888, random);
  const auto sourceBytes = bytesOf(*source);
  const int xs[] = {INT32_MIN, -11, -10, -9, -5, 0, 3, 11, 12, 20, 21, INT32_MAX};
  const int ys[] = {INT32_MIN, -9, -8, -7, -3, 0, 5, 6, 12, 13, INT32_MAX};
  for (const int x : xs) {
    for (const int y : ys) {
      const Image image = randomImage(kWidth, kHeight, RGBA8888, random);
      auto expected = bytesOf(*image);
      QAVMMIHelperRGBA helper(*image);
      bool touched = false;
      for (std::size_t row = 0; row < kSourceHeight; ++row) {
        for (std::size_t column = 0; column < kSourceWidth; ++column) {
          const std::int64_t tx = std::int64_t{x} + static_cast<std::int64_t>(column);
          const std::int64_t ty = std::int64_t{y} + static_cast<std::int64_t>(row);
          if (tx < 0 || tx >= kWidth || ty < 0 || ty >= kHeight) continue;
          touched = true;
          plainRow(expected.data() + 4 * (ty * kWidth + tx), sourceBytes.data() + 4 * (row * kSourceWidth + column), 1);
        }
      }
      EXPECT_EQ(helper.Blend(*source, x, y), touched ? S_OK : E_FAIL) << x << ", " << y;
      EXPECT_EQ(bytesOf(*image), expected) << x << ", " << y;
    }
  }
  const Image image = makeImage(4, 4, RGBA8888);
  QAVMMIHelperRGBA helper(*image);
  EXPECT_EQ(helper.Blend(*makeImage(4, 4, RGB888), 0, 0), E_FAIL);
  const Image empty(new QAVPixelImage(4, 4, RGBA8888, nullptr, QAVDeallocatePixelsByCaller));
  EXPECT_EQ(helper.Blend(*empty, 0, 0), E_FAIL);
  EXPECT_EQ(helper.Blend(*image, 0, 0), E_FAIL);
  EXPECT_EQ(helper.Blend(*makeImage(4, 0, RGBA8888), 0, 1), S_OK);
}

// A second image over the same memory, one row further down: each row is mixed with what the row before became.
TEST(Blend, OfAnImageThatSharesTheMemory) {
  std::mt19937 random(12);
  std::vector<std::uint8_t> memory(4 * 40 * 6);
  fill(memory.data(), memory.size(), Texture::Noise, random);
  auto expected = memory;
  for (std::size_t row = 0; row < 5; ++row) plainRow(&expected[160 * (row + 1)], &expected[160 * row], 40);
  const Image image(new QAVPixelImage(40, 5, RGBA8888, memory.data() + 160, QAVDeallocatePixelsByCaller));
  const Image source(new QAVPixelImage(40, 5, RGBA8888, memory.data(), QAVDeallocatePixelsByCaller));
  EXPECT_EQ(QAVMMIHelperRGBA(*image).Blend(*source, 0, 0), S_OK);
  EXPECT_EQ(memory, expected);
}

}  // namespace
}  // namespace qav::test
