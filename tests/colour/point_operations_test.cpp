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

const Operation kOperations[] = {
    {"Brightness", [](auto& i, int m, auto a) { return Processor::Brightness(i, 0.2f, m, never, a); },
     [](auto& r) { r.ApplyBrightness(0.2f); }},
    {"Brightness 0", [](auto& i, int m, auto a) { return Processor::Brightness(i, -0.0f, m, never, a); }, {}},
    {"Contrast", [](auto& i, int m, auto a) { return Processor::Contrast(i, -0.3f, m, never, a); },
     [](auto& r) { r.ApplyContrast(-0.3f); }},
    {"Contrast 0", [](auto& i, int m, auto a) { return Processor::Contrast(i, 0.0f, m, never, a); }, {}},
    {"Gamma", [](auto& i, int m, auto a) { return Processor::Gamma(i, 2.2f, m, never, a); },
     [](auto& r) { r.ApplyGamma(2.2f); }},
    {"Gamma 1", [](auto& i, int m, auto a) { return Processor::Gamma(i, 1.0f, m, never, a); }, {}},
    {"Negative", [](auto& i, int m, auto a) { return Processor::Negative(i, m, never, a); },
     [](auto& r) { r.ApplyNegative(); }},
    {"Solarize", [](auto& i, int m, auto a) { return Processor::Solarize(i, 0.4f, m, never, a); },
     [](auto& r) { r.ApplySolarize(0.4f); }},
    {"Posterize 2", [](auto& i, int m, auto a) { return Processor::Posterize(i, 2, m, never, a); },
     [](auto& r) { r.ApplyPosterize(2); }},
    {"Posterize 254", [](auto& i, int m, auto a) { return Processor::Posterize(i, 254, m, never, a); },
     [](auto& r) { r.ApplyPosterize(254); }},
    {"Posterize 255", [](auto& i, int m, auto a) { return Processor::Posterize(i, 255, m, never, a); }, {}},
    {"Posterize 256", [](auto& i, int m, auto a) { return Processor::Posterize(i, 256, m, never, a); }, {}, E_FAIL},
    {"Posterize 1", [](auto& i, int m, auto a) { return Processor::Posterize(i, 1, m, never, a); }, {}, E_FAIL},
    {"Posterize 0", [](auto& i, int m, auto a) { return Processor::Posterize(i, 0, m, never, a); }, {}, E_FAIL},
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
  switch (format) {
    case L8:
      return {1};
    case LA88:
      return {1, 16};
    case RGB888:
      return {2, 4, 8};
    case RGBA8888:
      return {2, 4, 8, 16};
    default:
      return {};
  }
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
          const int width = 1 + below(130, random), height = 1 + below(3, random);
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
