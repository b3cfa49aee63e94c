#include <QAVMMIColorRamp.h>
#include <QAVMMediaImageProcessor.h>

#include "support/Test.h"

namespace qav::test {
namespace {

using Processor = QAVMMediaImageProcessor;

struct Operation {
  const char* name;
  std::function<HRESULT(QAVPixelImage&, int, unsigned char)> run;
  std::function<void(QAVMMIColorRamp&)> build;  // none for a neutral parameter
  HRESULT refusal = S_OK;                       // whatever the image
};

void mustNotBeCalled(float) { FAIL() << "progress"; }
constexpr auto never = &mustNotBeCalled;

// Without `build` the value is neutral.
Operation curve(const char* name, HRESULT (*run)(QAVPixelImage&, float, int, void (*)(float), unsigned char),
                void (QAVMMIColorRamp::*build)(float), float value) {
  Operation operation{name, [=](auto& i, int m, auto a) { return run(i, value, m, never, a); }, {}};
  if (build) operation.build = [=](auto& ramp) { (ramp.*build)(value); };
  return operation;
}

Operation posterize(const char* name, unsigned levels, HRESULT refusal = S_OK) {
  Operation operation{
      name, [=](auto& i, int m, auto a) { return Processor::Posterize(i, levels, m, never, a); }, {}, refusal};
  if (refusal == S_OK && levels < 255) operation.build = [=](auto& ramp) { ramp.ApplyPosterize(levels); };
  return operation;
}

const Operation kOperations[] = {
    curve("Brightness", Processor::Brightness, &QAVMMIColorRamp::ApplyBrightness, 0.2f),
    curve("Brightness 0", Processor::Brightness, nullptr, -0.0f),
    curve("Contrast", Processor::Contrast, &QAVMMIColorRamp::ApplyContrast, -0.3f),
    curve("Contrast 0", Processor::Contrast, nullptr, 0.0f),
    curve("Gamma", Processor::Gamma, &QAVMMIColorRamp::ApplyGamma, 2.2f),
    curve("Gamma 1", Processor::Gamma, nullptr, 1.0f),
    curve("Solarize", Processor::Solarize, &QAVMMIColorRamp::ApplySolarize, 0.4f),
    {"Negative", [](auto& i, int m, auto a) { return Processor::Negative(i, m, never, a); },
     [](auto& r) { r.ApplyNegative(); }},
    posterize("Posterize 2", 2),
    posterize("Posterize 254", 254),
    posterize("Posterize 255", 255),
    posterize("Posterize 256", 256, E_FAIL),
    posterize("Posterize 1", 1, E_FAIL),
    posterize("Posterize 0", 0, E_FAIL),
    {"AdjustColor", [](auto& i, int m, auto a) { return Processor::AdjustColor(i, 0.2f, 0.5f, 1.4f, m, never, a); },
     [](auto& r) {
       r.ApplyBrightness(0.2f);
       r.ApplyContrast(0.5f);
       r.ApplyGamma(1.4f);
     }},
    {"AdjustColor, gamma alone",
     [](auto& i, int m, auto a) { return Processor::AdjustColor(i, 0.0f, 0.0f, 0.7f, m, never, a); },
     [](auto& r) { r.ApplyGamma(0.7f); }},
    {"AdjustColor 0 0 1", [](auto& i, int m, auto a) { return Processor::AdjustColor(i, 0, 0, 1, m, never, a); }, {}},
};

// The mask bit of each byte of a pixel.
std::vector<int> channelBits(QAVPixelImageFormat format) {
  const std::vector<int> bits[] = {{1}, {1, 16}, {2, 4, 8}, {2, 4, 8, 16}};
  return format <= RGBA8888 ? bits[format] : std::vector<int>();
}

// What the operation makes of the bytes, and its status.
HRESULT expectedResult(const Operation& operation, QAVPixelImageFormat format, int mask,
                       std::vector<std::uint8_t>& bytes) {
  if (operation.refusal != S_OK || !operation.build) return operation.refusal;
  const std::vector<int> bits = channelBits(format);
  QAVMMIColorRamp ramp;
  operation.build(ramp);
  bool any = false;
  for (const int bit : bits) any = any || (mask & bit);
  for (std::size_t i = 0; i < bytes.size(); ++i)
    if (!bits.empty() && mask & bits[i % bits.size()]) bytes[i] = ramp[bytes[i]];
  return any ? S_OK : E_FAIL;
}

TEST(PointOperations, EveryMaskOfEveryFormatWithinItsMemory) {
  std::mt19937 random(21);
  atEveryLevel([&] {
    for (const Operation& operation : kOperations)
      for (int mask = -1; mask <= 32; ++mask) {
        for (const QAVPixelImageFormat format : kByteFormats) {
          const int width = 1 + below(300, random), height = 1 + below(2, random);
          SCOPED_TRACE(testing::Message() << operation.name << " " << format << " " << mask << " " << width);
          const Image original = randomImage(width, height, format, random);
          GuardedImage image(*original, random() % 4);
          auto expected = bytesOf(*original);
          const HRESULT status = expectedResult(operation, format, mask, expected);
          ASSERT_EQ(operation.run(*image, mask, 1), status);
          ASSERT_EQ(bytesOf(*image), expected);
          ASSERT_TRUE(image.guardsIntact());
        }
        for (const QAVPixelImageFormat format : {BitonalRuns, NoPixelStorage, RGBFloat, RGBA16161616}) {
          std::vector<std::uint8_t> none;
          ASSERT_EQ(operation.run(*makeImage(23, 14, format), mask, 1), expectedResult(operation, format, mask, none));
        }
      }
  });
}

TEST(PointOperations, WithoutTheApplyFlagOnlyTheFormatCounts) {
  for (const QAVPixelImageFormat format : kAllFormats) {
    const Image image(new ReadOnlyImage(6, 5, format));
    const auto before = bytesOf(*image);
    for (const Operation& operation : kOperations)
      EXPECT_EQ(operation.run(*image, 0, 0), format == BitonalRuns || format == NoPixelStorage ? E_FAIL : S_OK)
          << operation.name << " " << format;
    EXPECT_EQ(bytesOf(*image), before);
  }
}

TEST(PointOperations, ReadOnlyAndEmptyImages) {
  for (const QAVPixelImageFormat format : kByteFormats) {
    const Image readOnly(new ReadOnlyImage(6, 5, format));
    for (const Operation& operation : kOperations) {
      const bool looks = operation.refusal == S_OK && operation.build;
      EXPECT_EQ(operation.run(*readOnly, 31, 1), looks ? E_FAIL : operation.refusal) << operation.name;
      const Image empty = makeImage(0, 5, format);
      EXPECT_EQ(operation.run(*empty, 31, 1), operation.refusal) << operation.name;
      EXPECT_EQ(operation.run(*empty, 0, 1), looks ? E_FAIL : operation.refusal) << operation.name;
    }
  }
}

TEST(Balance, ThreeRampsLeavingAlpha) {
  std::mt19937 random(22);
  const float shifts[][3] = {{0.1f, -0.2f, 0.3f}, {0, 0, 0}, {0, 1, -1}, {7, -7, 0}};
  atEveryLevel([&] {
    for (const auto& shift : shifts) {
      for (const QAVPixelImageFormat format : {RGB888, RGBA8888}) {
        const Image image = randomImage(97, 5, format, random);
        auto expected = bytesOf(*image);
        EXPECT_EQ(Processor::Balance(*image, shift[0], shift[1], shift[2], never, 0), S_OK);
        EXPECT_EQ(bytesOf(*image), expected);
        QAVMMIColorRamp ramps[3];
        for (int k = 0; k < 3; ++k) ramps[k].ApplyBrightness(shift[k]);
        const std::size_t channels = format == RGB888 ? 3 : 4;
        for (std::size_t i = 0; i < expected.size(); ++i)
          if (i % channels < 3) expected[i] = ramps[i % channels][expected[i]];
        EXPECT_EQ(Processor::Balance(*image, shift[0], shift[1], shift[2], never, 1), S_OK);
        EXPECT_EQ(bytesOf(*image), expected);
      }
    }
  });
}

TEST(Balance, ChecksFormatAndBufferWhateverTheFlag) {
  for (const bool apply : {false, true}) {
    for (const QAVPixelImageFormat format : kAllFormats) {
      const bool colour = format == RGB888 || format == RGBA8888;
      const Image image = makeImage(4, 3, format), readOnly(new ReadOnlyImage(4, 3, format));
      EXPECT_EQ(Processor::Balance(*image, 0.5f, 0, 0, never, apply), colour ? S_OK : E_FAIL) << format;
      EXPECT_EQ(Processor::Balance(*readOnly, 0.5f, 0, 0, never, apply), E_FAIL) << format;
    }
  }
}

}  // namespace
}  // namespace qav::test
