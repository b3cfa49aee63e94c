#include <QAVMMediaImageProcessor.h>

#include "support/Test.h"

namespace qav::test {
namespace {

using Processor = QAVMMediaImageProcessor;

// The direct loop over pixels, channels and taps.
std::vector<std::uint8_t> convolved(const std::vector<std::uint8_t>& source, int width, int height, int taps,
                                    const std::vector<float>& kernel) {
  std::vector<std::uint8_t> out(source.size());
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int k = 0; k < 4; ++k) {
        volatile float sum = 0.0f, weights = 0.0f;
        std::size_t tap = 0;
        for (int r = y - taps / 2; r <= y + taps / 2; ++r)
          for (int c = x - taps / 2; c <= x + taps / 2; ++c) {
            const float weight = kernel[tap++];
            weights = weights + weight;
            if (r < 0 || r >= height || c < 0 || c >= width) continue;
            const volatile float product = weight * source[static_cast<std::size_t>((r * width + c) * 4 + k)];
            sum = sum + product;
          }
        const float v = sum / weights;
        out[static_cast<std::size_t>((y * width + x) * 4 + k)] = static_cast<std::uint8_t>(std::isnan(v) || v < 0 ? 0
                                                                                           : v > 255              ? 255
                                                                                                                  : v);
      }
  return out;
}

enum class Weights { Any, Whole, Dyadic, Uniform, ZeroSum, Tiny, Huge, NotFinite, kCount };

std::vector<float> randomKernel(Weights kind, int taps, std::mt19937& random) {
  std::uniform_real_distribution<float> any(-1.0f, 2.0f);
  const float inverse = 1.0f / static_cast<float>(taps * taps);
  std::vector<float> kernel(static_cast<std::size_t>(taps * taps));
  float rest = 0.0f;
  for (float& w : kernel) {
    w = any(random);
    if (kind == Weights::Uniform) w = inverse;
    if (kind == Weights::Whole || kind == Weights::ZeroSum) w = std::round(w * 4);
    if (kind == Weights::Dyadic) w = std::round(w * 64) / 256;
    if (kind == Weights::Tiny) w *= 1e-42f;
    if (kind == Weights::Huge) w *= 2e36f;
    if (kind == Weights::Any && random() % 4 == 0) w = 0.0f;
    rest += w;
  }
  float& middle = kernel[kernel.size() / 2];
  if (kind == Weights::ZeroSum) middle -= rest;
  if (kind == Weights::NotFinite)
    middle = random() % 2 ? std::numeric_limits<float>::infinity() : std::numeric_limits<float>::quiet_NaN();
  return kernel;
}

TEST(Convolution, EveryKernelGivesTheDirectLoop) {
  std::mt19937 random(6);
  atEveryLevel([&] {
    for (int round = 0; round < 400; ++round) {
      const int taps = 1 + 2 * below(round % 9 ? 4 : 9, random);
      const int width = 1 + below(70, random), height = 1 + below(9, random);
      const auto kind = static_cast<Weights>(random() % static_cast<unsigned>(Weights::kCount));
      const auto kernel = randomKernel(kind, taps, random);
      const Image image = randomImage(width, height, RGBA8888, random, kTextures[random() % 4]);
      const auto expected = convolved(bytesOf(*image), width, height, taps, kernel);
      ASSERT_EQ(Processor::LinearConvolveMatrix(*image, taps, kernel.data()), S_OK);
      ASSERT_EQ(bytesOf(*image), expected)
          << taps << " taps of kind " << static_cast<int>(kind) << ", " << width << "x" << height;
    }
  });
}

// Bands of one colour, of 255, of ramps along x and y, of specks, near or far, and of noise, above them noise or
// one colour.
std::vector<std::uint8_t> patchwork(int width, int height, std::mt19937& random) {
  std::vector<std::uint8_t> bytes;
  const unsigned flat = random() % 256, near = random() % 2 ? 1 : 255, start = random() % 2 * unsigned(height / 2);
  for (unsigned y = 0; y < unsigned(height); ++y)
    for (unsigned i = 0; i < 4 * unsigned(width); ++i) {
      const unsigned values[] = {flat, 255, i / 4, 3 * y, flat ^ (random() % 16 ? 0 : near), unsigned(random())};
      bytes.push_back(static_cast<std::uint8_t>(y < start ? flat : values[i / 40 % 6]));
    }
  return bytes;
}

enum class Shape { Random, Box, Bell, Sharpening, Negative, Fractions, kCount };

std::vector<float> normalisedKernel(Shape shape, int taps, float scale, std::mt19937& random) {
  std::vector<float> kernel;
  float sum = 0.0f;
  for (int i = 0; i < taps * taps; ++i) {
    const auto x = static_cast<float>(i % taps - taps / 2), y = static_cast<float>(i / taps - taps / 2);
    const float any = static_cast<float>(random() % 1000 + 1) / 1000;
    const bool middle = i == taps * taps / 2, outer = i < taps || i >= taps * (taps - 1);
    kernel.push_back(shape == Shape::Box                  ? 1.0f
                     : shape == Shape::Bell               ? std::exp(-(x * x + y * y) / static_cast<float>(taps))
                     : shape == Shape::Sharpening         ? (middle ? static_cast<float>(taps * taps) : -0.5f * any)
                     : shape == Shape::Fractions && outer ? 0.0f
                                                          : any);
    sum += kernel.back();
  }
  for (float& w : kernel) w *= (shape == Shape::Negative ? -scale : scale) / sum;
  if (shape != Shape::Fractions) return kernel;
  // Fractions of 2^18, small above and below: quotients come as close to whole numbers as single precision rounds.
  float rest = 1.0f;
  for (float& w : kernel) rest -= w = (w > 0 ? std::round(w / scale * 0x1p18f) : float(random() % 2)) * 0x1p-18f;
  kernel[kernel.size() / 2] += rest;
  return kernel;
}

// Quotients that are whole numbers but for their rounding.
TEST(Convolution, ResultsBesideWholeNumbers) {
  std::mt19937 random(9);
  atEveryLevel([&] {
    for (int round = 0; round < 200; ++round) {
      const auto shape = static_cast<Shape>(random() % static_cast<unsigned>(Shape::kCount));
      const int taps = 3 + 2 * below(4, random);
      const float scales[] = {1.0f, 1.0f, 1e-20f, 3e25f};
      const auto kernel = normalisedKernel(shape, taps, scales[random() % 4], random);
      const int width = 20 + below(60, random), height = 1 + below(30, random);
      auto bytes = patchwork(width, height, random);
      const auto expected = convolved(bytes, width, height, taps, kernel);
      Processor::LinearConvolveMatrixRGBA(bytes.data(), width, height, taps, kernel.data());
      ASSERT_EQ(bytes, expected) << taps << " taps of shape " << static_cast<int>(shape) << ", " << width << "x"
                                 << height;
    }
  });
}

// In a picture of one row only the middle row of weights takes part; the others make up the divisor.
std::vector<float> kernelWithSum(std::vector<float> middle, int sum) {
  const std::size_t taps = middle.size(), outside = taps * (taps - 1);
  std::vector<float> kernel(outside / 2);
  kernel.insert(kernel.end(), middle.begin(), middle.end());
  kernel.resize(taps * taps);
  for (const float w : middle) sum -= static_cast<int>(w);
  for (std::size_t i = 0; i < outside; ++i) {
    const int part = std::clamp(sum, -127, 127);
    kernel[i < outside / 2 ? i : i + taps] = static_cast<float>(part);
    sum -= part;
  }
  return kernel;
}

// Pairs of pixels give each sum from 0 to 128 * 255 by the weights 1 and 127, and the wide kernel sums beyond 16 bits.
TEST(Convolution, EverySumByEveryWholeDivisor) {
  std::vector<std::uint8_t> source;
  for (int s = 0; s <= 128 * 255; s += 4)
    for (int part = 0; part < 2; ++part)
      for (int sum = s; sum < s + 4; ++sum) {
        const int centre = std::min(sum / 127, 255);
        source.push_back(static_cast<std::uint8_t>(part ? centre : std::min(sum - 127 * centre, 255)));
      }
  const int pixels = static_cast<int>(source.size() / 4);
  const std::vector<float> middles[] = {{1, 127, 0}, {127, 1, 127, 127, 63}, {1, 63, -63}};
  for (int divisor = -264; divisor <= 264; divisor += divisor >= 0 || divisor < -258 ? 1 : 17) {
    const auto& middle = middles[divisor == 1 || divisor == -1 ? 2 : divisor % 8 == 3 ? 1 : 0];
    const auto taps = static_cast<int>(middle.size());
    const auto kernel = kernelWithSum(middle, divisor);
    const auto expected = convolved(source, pixels, 1, taps, kernel);
    atEveryLevel([&] {
      auto bytes = source;
      Processor::LinearConvolveMatrixRGBA(bytes.data(), pixels, 1, taps, kernel.data());
      ASSERT_TRUE(bytes == expected) << divisor;
    });
  }
}

TEST(Convolution, SizesOfTheBufferCall) {
  std::mt19937 random(7);
  const auto kernel = randomKernel(Weights::Any, 5, random);
  const auto source = bytesOf(*randomImage(6, 5, RGBA8888, random));
  const struct { int kernelSize, taps; } cases[] = {{0, 1}, {1, 1}, {-1, 1}, {2, 3}, {3, 3}, {4, 5}, {5, 5}};
  for (const auto& c : cases) {
    GuardedBytes buffer(source.size());
    std::copy(source.begin(), source.end(), buffer.data());
    EXPECT_EQ(Processor::LinearConvolveMatrixRGBA(buffer.data(), 6, 5, c.kernelSize, kernel.data()), S_OK);
    EXPECT_EQ(buffer.bytes(), convolved(source, 6, 5, c.taps, kernel)) << c.kernelSize;
    EXPECT_TRUE(buffer.guardsIntact());
  }
  for (int kernelSize : {-2, -3, std::numeric_limits<int>::min()}) {  // no weights: 0 / 0
    auto bytes = source;
    EXPECT_EQ(Processor::LinearConvolveMatrixRGBA(bytes.data(), 6, 5, kernelSize, kernel.data()), S_OK);
    EXPECT_EQ(bytes, std::vector<std::uint8_t>(source.size(), 0));
  }
}

TEST(Convolution, SinglePixelsFromAnyRowAndColumn) {
  std::mt19937 random(8);
  const auto kernel = randomKernel(Weights::Any, 3, random);
  auto source = bytesOf(*randomImage(4, 3, RGBA8888, random));
  const auto whole = convolved(source, 4, 3, 3, kernel);
  constexpr int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
  for (int row : {least, -2, -1, 0, 1, 2, 3, most})
    for (int column : {least, -5, -1, 0, 2, 3, 4, 5, most}) {
      const std::int64_t index = std::int64_t{row} * 4 + column;
      const bool exists = index >= 0 && index < 12;
      float channels[4] = {9, 9, 9, 9};
      Processor::GetPixelRGBA(row, column, 4, 3, source.data(), channels[0], channels[1], channels[2], channels[3]);
      GuardedBytes out(source.size());
      const auto untouched = out.bytes();
      EXPECT_EQ(Processor::ApplyKernelRGBA(row, column, 4, 3, 3, kernel.data(), source.data(), out.data()), S_OK);
      EXPECT_TRUE(out.guardsIntact());
      EXPECT_EQ(out.bytes() != untouched, exists) << row << ", " << column;
      for (std::size_t k = 0; k < 4; ++k) {
        const auto at = static_cast<std::size_t>(index) * 4 + k;
        EXPECT_EQ(channels[k], exists ? source[at] : 0.0f);
        if (exists && column >= 0 && column < 4) {
          EXPECT_EQ(out.bytes()[at], whole[at]) << row << ", " << column;
        }
      }
    }
  float red = 9, green = 9, blue = 9, alpha = 9;
  Processor::GetPixelRGBA(0, 0, 4, 3, nullptr, red, green, blue, alpha);
  EXPECT_EQ(red + green + blue + alpha, 0.0f);
  EXPECT_EQ(Processor::ApplyKernelRGBA(0, 0, 4, 3, 3, kernel.data(), source.data(), nullptr), S_OK);
  EXPECT_EQ(Processor::ApplyKernelRGBA(0, 0, 4, 3, 3, nullptr, source.data(), source.data()), E_FAIL);
  EXPECT_EQ(Processor::ApplyKernelRGBA(0, 0, 4, 3, 3, kernel.data(), nullptr, source.data()), E_FAIL);
}

TEST(Convolution, RefusalsInOrder) {
  const std::vector<float> kernel(9, 1.0f);
  for (QAVPixelImageFormat format : kAllFormats) {
    const Image image = makeImage(3, 3, format);
    EXPECT_EQ(Processor::LinearConvolveMatrix(*image, 2, kernel.data()), E_FAIL);
    EXPECT_EQ(Processor::LinearConvolveMatrix(*image, 0, kernel.data()), E_FAIL);
    EXPECT_EQ(Processor::LinearConvolveMatrix(*image, 3, kernel.data()), format <= RGBA8888 ? S_OK : E_FAIL) << format;
    EXPECT_EQ(Processor::LinearConvolveMatrix(*image, 3, nullptr), format < RGBA8888 ? S_OK : E_FAIL) << format;
    EXPECT_EQ(Processor::LinearConvolveMatrix(*makeImage(0, 3, format), 3, kernel.data()), E_FAIL) << format;
  }
  const Image grey = imageOf(2, 1, L8, {3, 200});
  EXPECT_EQ(Processor::LinearConvolveMatrix(*grey, 3, kernel.data()), S_OK);
  EXPECT_EQ(bytesOf(*grey), (std::vector<std::uint8_t>{3, 200}));
  EXPECT_EQ(Processor::LinearConvolveMatrix(*Image(new ReadOnlyImage(2, 2, L8)), 3, kernel.data()), E_FAIL);

  unsigned char pixel[4] = {1, 2, 3, 4};
  float weights[9] = {};
  EXPECT_EQ(Processor::LinearConvolveMatrixRGBA(nullptr, 1, 1, 3, weights), E_FAIL);
  EXPECT_EQ(Processor::LinearConvolveMatrixRGBA(pixel, 1, 1, 3, nullptr), E_FAIL);
  EXPECT_EQ(Processor::LinearConvolveMatrixRGBA(pixel, 0, 1, 3, weights), S_OK);
  EXPECT_EQ(Processor::LinearConvolveMatrixRGBA(pixel, 1, -7, 3, weights), S_OK);
  EXPECT_EQ(pixel[0], 1);
}

}  // namespace
}  // namespace qav::test
