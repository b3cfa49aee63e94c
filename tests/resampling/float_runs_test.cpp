#include "resampling/FloatWeightPlan.h"
#include "resampling/WeightRuns.h"

#include "resampling/Definition.h"
#include "support/Checks.h"
#include "support/Test.h"

#include <QAVMMResizeEngine.h>

namespace qav::test {
namespace {

struct Floats {
  int width;
  int height;
  int channels;
  std::vector<float> samples;
};

::testing::AssertionResult scalesAsDefined(const Floats& picture, int width, int height, QAVMMGenericFilter& filter) {
  const Image image = makeImage(picture.width, picture.height, picture.channels == 3 ? RGBFloat : RGBAFloat);
  std::copy(picture.samples.begin(), picture.samples.end(), image->GetFloatingPixelsToModify());
  const Image result(
      QAVMMResizeEngine(&filter).scale(image.get(), static_cast<unsigned>(width), static_cast<unsigned>(height)));
  const float* const got = result->GetFloatingPixelsToRead();
  const auto expected =
      definedScale(picture.samples, picture.width, picture.height, picture.channels, width, height, &filter);
  for (std::size_t i = 0; i < expected.size(); ++i)
    if (std::memcmp(got + i, &expected[i], sizeof(float)) != 0 && !(std::isnan(got[i]) && std::isnan(expected[i])))
      return ::testing::AssertionFailure() << "sample " << i << " is " << got[i] << ", not " << expected[i];
  return ::testing::AssertionSuccess();
}

Floats randomFloats(int width, int height, int channels, std::mt19937& random) {
  Floats picture{width, height, channels, std::vector<float>(static_cast<std::size_t>(width * height * channels))};
  for (float& sample : picture.samples) sample = std::ldexp(static_cast<float>(random() >> 8), -20) - 7.0f;
  return picture;
}

TEST(FloatRuns, SimpleRatiosAreTakenAlmostWhole) {
  QAVMMTriangleFilter triangle;
  QAVMMCatmullRomFilter cubic;
  QAVMMLanczos3Filter lanczos;
  FunctionFilter narrow(1.5, [](double x) { return std::max(0.0, 1.5 - std::fabs(x)); });
  const struct {
    QAVMMGenericFilter& kernel;
    int from, to;
    std::size_t slots;
    bool exact, lone;
  } cases[] = {{triangle, 300, 100, 2, false, true}, {cubic, 300, 100, 4, false, true},
               {cubic, 300, 150, 4, true, false},    {narrow, 300, 200, 3, false, false},
               {cubic, 300, 200, 4, false, false},   {lanczos, 300, 100, 6, false, true},
               {cubic, 300, 450, 6, false, false},   {cubic, 300, 600, 8, true, false}};
  for (const auto& c : cases) {
    const WeightRuns weights(&c.kernel, c.to, c.from);
    FloatWeightPlan plan(weights.entries);
    plan.addRun();
    EXPECT_EQ(plan.run.slots, c.slots) << c.from << " to " << c.to;
    EXPECT_EQ(plan.run.exact, c.exact) << c.from << " to " << c.to;
    EXPECT_GT(plan.run.count(), static_cast<std::size_t>(c.to) * 9 / 10) << c.from << " to " << c.to;
    ASSERT_GT(plan.run.count(), 10u);
    EXPECT_EQ(plan.run.turns[10].lone > plan.run.turns[9].behind, c.lone) << c.from << " to " << c.to;
  }
}

// Zeros before, between and behind the other weights, at the edges of the picture too.
TEST(FloatRuns, SamplesThatAreNotFiniteShowThroughWeightsOfZero) {
  QAVMMTriangleFilter triangle;
  QAVMMCatmullRomFilter cubic;
  QAVMMLanczos3Filter lanczos;
  std::mt19937 random(11);
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  atEveryLevel([&] {
    for (QAVMMGenericFilter* const kernel :
         {static_cast<QAVMMGenericFilter*>(&triangle), static_cast<QAVMMGenericFilter*>(&cubic),
          static_cast<QAVMMGenericFilter*>(&lanczos)})
      for (const auto& [from, to] : {std::pair{60, 20}, {48, 24}, {36, 54}, {24, 48}, {55, 11}, {60, 37}})
        for (int x = 0; x < from; ++x) {
          const int channels = 3 + x % 2;
          Floats picture = randomFloats(from, 16, channels, random);
          picture.samples[(random() % 16 * static_cast<std::size_t>(from) + static_cast<std::size_t>(x)) *
                          static_cast<std::size_t>(channels)] = x % 3 == 0   ? -kInfinity
                                                                : x % 3 == 1 ? kInfinity
                                                                             : std::nanf("");
          ASSERT_TRUE(scalesAsDefined(picture, to, 16, *kernel)) << from << " to " << to << ", " << x;
        }
  });
}

// 1 + weight * sample lies so close to the middle between two floats that rounding the product decides.
TEST(FloatRuns, ProductsAreRoundedBeforeTheyAreAdded) {
  constexpr double kProduct = 0x1p-24 + 0x1p-53;
  float sample = 1.0f;
  double weight = 0.0;
  const auto roundingDecides = [&] {
    const double product = weight * static_cast<double>(sample);
    return static_cast<float>(1.0 + product) != static_cast<float>(std::fma(weight, static_cast<double>(sample), 1.0));
  };
  do {
    sample = std::nextafter(sample, 2.0f);
    weight = kProduct / static_cast<double>(sample);
    while (std::fma(weight, static_cast<double>(sample), -kProduct) <= 0.0) weight = std::nextafter(weight, 1.0);
  } while (!roundingDecides());

  // When a picture is doubled, three taps; their sum is negative, so they stay what they are.
  FunctionFilter filter(1.0, [=](double x) { return x > 0 ? 1.0 : x > -1 ? weight : -4.0; });
  for (const bool rows : {true, false}) {
    Floats picture{rows ? 66 : 16, rows ? 16 : 66, 4, {}};
    for (int y = 0; y < picture.height; ++y)
      for (int x = 0; x < picture.width * 4; ++x) {
        const float values[] = {1.0f, sample, 0.0f};
        picture.samples.push_back(values[(rows ? x / 4 : y) % 3]);
      }
    atEveryLevel([&] { ASSERT_TRUE(scalesAsDefined(picture, rows ? 132 : 16, rows ? 16 : 132, filter)) << rows; });
  }
}

}  // namespace
}  // namespace qav::test
