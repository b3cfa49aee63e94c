#include "comparison/ColourDifferences.h"
#include "kernels/ColourDifference.h"
#include "kernels/ColourMatrices.h"

#include "support/Test.h"

#include <QAVMMColorTransform.h>

namespace qav::test {
namespace {

// Sharma, Wu and Dalal, "The CIEDE2000 color-difference formula: implementation notes, supplementary test data, and
// mathematical observations", Color Research and Application 30 (2005), table 1.
constexpr double kPublished[34][7] = {
    {50.0000, 2.6772, -79.7751, 50.0000, 0.0000, -82.7485, 2.0425},
    {50.0000, 3.1571, -77.2803, 50.0000, 0.0000, -82.7485, 2.8615},
    {50.0000, 2.8361, -74.0200, 50.0000, 0.0000, -82.7485, 3.4412},
    {50.0000, -1.3802, -84.2814, 50.0000, 0.0000, -82.7485, 1.0000},
    {50.0000, -1.1848, -84.8006, 50.0000, 0.0000, -82.7485, 1.0000},
    {50.0000, -0.9009, -85.5211, 50.0000, 0.0000, -82.7485, 1.0000},
    {50.0000, 0.0000, 0.0000, 50.0000, -1.0000, 2.0000, 2.3669},
    {50.0000, -1.0000, 2.0000, 50.0000, 0.0000, 0.0000, 2.3669},
    {50.0000, 2.4900, -0.0010, 50.0000, -2.4900, 0.0009, 7.1792},
    {50.0000, 2.4900, -0.0010, 50.0000, -2.4900, 0.0010, 7.1792},
    {50.0000, 2.4900, -0.0010, 50.0000, -2.4900, 0.0011, 7.2195},
    {50.0000, 2.4900, -0.0010, 50.0000, -2.4900, 0.0012, 7.2195},
    {50.0000, -0.0010, 2.4900, 50.0000, 0.0009, -2.4900, 4.8045},
    {50.0000, -0.0010, 2.4900, 50.0000, 0.0010, -2.4900, 4.8045},
    {50.0000, -0.0010, 2.4900, 50.0000, 0.0011, -2.4900, 4.7461},
    {50.0000, 2.5000, 0.0000, 50.0000, 0.0000, -2.5000, 4.3065},
    {50.0000, 2.5000, 0.0000, 73.0000, 25.0000, -18.0000, 27.1492},
    {50.0000, 2.5000, 0.0000, 61.0000, -5.0000, 29.0000, 22.8977},
    {50.0000, 2.5000, 0.0000, 56.0000, -27.0000, -3.0000, 31.9030},
    {50.0000, 2.5000, 0.0000, 58.0000, 24.0000, 15.0000, 19.4535},
    {50.0000, 2.5000, 0.0000, 50.0000, 3.1736, 0.5854, 1.0000},
    {50.0000, 2.5000, 0.0000, 50.0000, 3.2972, 0.0000, 1.0000},
    {50.0000, 2.5000, 0.0000, 50.0000, 1.8634, 0.5757, 1.0000},
    {50.0000, 2.5000, 0.0000, 50.0000, 3.2592, 0.3350, 1.0000},
    {60.2574, -34.0099, 36.2677, 60.4626, -34.1751, 39.4387, 1.2644},
    {63.0109, -31.0961, -5.8663, 62.8187, -29.7946, -4.0864, 1.2630},
    {61.2901, 3.7196, -5.3901, 61.4292, 2.2480, -4.9620, 1.8731},
    {35.0831, -44.1164, 3.7933, 35.0232, -40.0716, 1.5901, 1.8645},
    {22.7233, 20.0904, -46.6940, 23.0331, 14.9730, -42.5619, 2.0373},
    {36.4612, 47.8580, 18.3852, 36.2715, 50.5065, 21.2231, 1.4146},
    {90.8027, -2.0831, 1.4410, 91.1528, -1.6435, 0.0447, 1.4441},
    {90.9257, -0.5406, -0.9208, 88.6381, -0.8985, -0.7239, 1.5381},
    {6.7747, -0.2908, -2.4247, 5.8714, -0.0985, -2.2286, 0.6377},
    {2.0776, 0.0795, -1.1350, 0.9033, -0.0636, -0.5514, 0.9082},
};

double platformDifference(const double* lab1, const double* lab2) {
  double result = -1.0;
  QAVMMColorTransform::ComputeDeltaE(lab1, lab2, DELTA_E_CIEDE2000, result, 3.0, nullptr);
  return result;
}

TEST(ColourDifference, ThePublishedPairs) {
  atEveryLevel([] {
    auto pairs = std::make_unique<kernels::ColourPairs>();
    for (std::size_t i = 0; i < 34; ++i)
      for (std::size_t k = 0; k < 6; ++k) pairs->lab[k / 3][k % 3][i] = kPublished[i][k];
    kernels::colourDifferenceKernels().deltaE2000(*pairs, 34);
    for (std::size_t i = 0; i < 34; ++i) {
      const double plain = platformDifference(kPublished[i], kPublished[i] + 3);
      EXPECT_NEAR(plain, kPublished[i][6], 5e-5) << i;
      EXPECT_NEAR(platformDifference(kPublished[i] + 3, kPublished[i]), kPublished[i][6], 5e-5) << i;
      // Only the pairs of opposite hues, and the one of hue 0, are left to the caller.
      const bool left = (i >= 8 && i < 15) || i == 21;
      EXPECT_EQ(pairs->difference[i] < 0.0, left) << i;
      EXPECT_NEAR(left ? plain : pairs->difference[i], plain, 1e-9) << i;
    }
  });
}

// Pairs of every kind: any two colours, near ones, greys beside colours, black, opposite and equal colours.
std::vector<std::uint8_t> colours(std::size_t pixels, std::size_t stride, unsigned seed, bool second) {
  std::mt19937 random(seed);
  std::vector<std::uint8_t> bytes(pixels * stride);
  for (std::size_t i = 0; i < pixels; ++i) {
    std::uint8_t rgba[4], other[4];
    for (auto& byte : rgba) byte = static_cast<std::uint8_t>(random());
    std::memcpy(other, rgba, 4);
    const auto kind = random() % 8, channel = random() % 3;
    if (kind == 0) std::fill_n(rgba, 3, rgba[0]);
    if (kind == 1) std::fill_n(other, 3, rgba[1]);
    if (kind == 2) other[channel] ^= 1;
    if (kind == 3)
      for (std::size_t k = 0; k < 3; ++k) other[k] = static_cast<std::uint8_t>(255 - rgba[k]);
    if (kind == 4 && random() % 8 == 0) std::fill_n(rgba, 3, 0);
    if (kind >= 5)
      for (auto& byte : other) byte = static_cast<std::uint8_t>(random());
    std::memcpy(bytes.data() + i * stride, second ? other : rgba, stride);
  }
  return bytes;
}

TEST(ColourDifference, NearThePlainComputationAndTheSameAtEveryLevel) {
  for (const std::size_t stride : {std::size_t{3}, std::size_t{4}}) {
    for (const std::size_t pixels : {1u, 2u, 15u, 257u, 60000u}) {
      const auto first = colours(pixels, stride, static_cast<unsigned>(pixels), false);
      auto second = colours(pixels, stride, static_cast<unsigned>(pixels), true);
      // Long runs without an equal colour, one of which ends within a block.
      for (std::size_t i = 10000; i < std::min(pixels, std::size_t{41000}); ++i)
        second[i * stride] = static_cast<std::uint8_t>(first[i * stride] + 1 + i % 255);
      std::vector<double> baseline;
      atEveryLevel([&] {
        std::vector<double> found(pixels + 1, -7.0);
        colourDifferences(first.data(), second.data(), pixels, stride, found.data());
        EXPECT_EQ(found[pixels], -7.0);
        if (baseline.empty()) baseline = found;
        EXPECT_EQ(std::memcmp(found.data(), baseline.data(), pixels * sizeof(double)), 0);
      });
      for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint8_t *const a = &first[i * stride], *const b = &second[i * stride];
        ASSERT_NEAR(baseline[i], plainColourDifference(a, b), 1e-9) << i;
        ASSERT_EQ(baseline[i] == 0.0, std::memcmp(a, b, 3) == 0) << i;
      }
    }
  }
}

TEST(ColourDifference, TheMatricesAreInverse) {
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      double sum = 0.0;
      for (int k = 0; k < 3; ++k) sum += kRgbToXyz[row * 3 + k] * kXyzToRgb[k * 3 + column];
      EXPECT_NEAR(sum, row == column, 2e-7);
    }
  }
}

}  // namespace
}  // namespace qav::test
