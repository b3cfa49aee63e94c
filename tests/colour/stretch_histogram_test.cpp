#include <QAVMMIColorRamp.h>
#include <QAVMMediaImageProcessor.h>

#include "support/Test.h"

namespace qav::test {
namespace {

struct Extremes {
  std::uint8_t minimum = 255, maximum = 0;
  void take(std::uint8_t v) {
    if (v > maximum)
      maximum = v;
    else
      minimum = std::min(minimum, v);
  }
  void stretch(QAVMMIColorRamp& ramp) const {
    ramp.ApplyStretch(static_cast<float>(minimum) / 255.0f, static_cast<float>(maximum) / 255.0f);
  }
};

// Samples that rise from step to step for a while, or to the end, so that the start of a channel matters.
std::vector<std::uint8_t> risingThenAny(std::size_t count, std::size_t channels, std::mt19937& random) {
  std::vector<std::uint8_t> bytes(count);
  int last[4] = {-1, -1, -1, -1};
  const std::size_t rising = random() % 4 ? random() % (count + 1) : count;
  const std::uint8_t range = static_cast<std::uint8_t>(1 + random() % 255);
  for (std::size_t i = 0; i < count; ++i) {
    int& previous = last[i % channels];
    const int next = previous + (random() % 3 ? 1 : below(4, random));
    bytes[i] = static_cast<std::uint8_t>(i < rising && next < 256 ? next : below(range, random));
    previous = bytes[i];
  }
  return bytes;
}

TEST(StretchHistogram, StretchesTheSelectedChannelsOfEveryLength) {
  std::mt19937 random(42);
  const std::vector<int> bits[] = {{1}, {1, 16}, {2, 4, 8}, {2, 4, 8, 16}};
  atEveryLevel([&] {
    for (int pixels = 1; pixels < 1400; pixels += pixels < 300 ? 1 : 37) {
      for (const QAVPixelImageFormat format : kByteFormats) {
        const std::size_t channels = bits[format].size();
        auto bytes = risingThenAny(static_cast<std::size_t>(pixels) * channels, channels, random);
        GuardedImage image(*imageOf(pixels, 1, format, bytes), random() % 4);
        Extremes extremes[4];
        for (std::size_t i = 0; i < bytes.size(); ++i) extremes[i % channels].take(bytes[i]);
        QAVMMIColorRamp ramps[4];
        bool any = false;
        const int mask = random() % 2 ? 31 : below(32, random);
        for (std::size_t k = 0; k < channels; ++k) {
          if (!(mask & bits[format][k])) continue;
          any = true;
          extremes[k].stretch(ramps[k]);
        }
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = ramps[i % channels][bytes[i]];
        ASSERT_EQ(QAVMMediaImageProcessor::StretchHistogram(*image, mask, nullptr, 1), any ? S_OK : E_FAIL);
        ASSERT_EQ(bytesOf(*image), bytes) << format << " " << mask << ", " << pixels << " pixels";
        ASSERT_TRUE(image.guardsIntact());
      }
    }
  });
}

TEST(StretchHistogram, KnownImages) {
  const std::pair<std::vector<std::uint8_t>, std::vector<std::uint8_t>> cases[] = {{{50, 50, 200}, {0, 0, 255}},
                                                                                   {{10, 20, 30}, {10, 20, 30}},
                                                                                   {{9, 9, 9}, {9, 9, 9}},
                                                                                   {{0, 100, 50}, {0, 255, 128}}};
  for (const auto& [before, after] : cases) {
    const Image image = imageOf(3, 1, L8, before);
    EXPECT_EQ(QAVMMediaImageProcessor::StretchHistogram(*image, 1, nullptr, 1), S_OK);
    EXPECT_EQ(bytesOf(*image), after);
  }
}

TEST(StretchHistogram, Statuses) {
  for (const QAVPixelImageFormat format : kAllFormats) {
    const bool bytes = format <= RGBA8888;
    const Image image = makeImage(4, 3, format), readOnly(new ReadOnlyImage(4, 3, format));
    EXPECT_EQ(QAVMMediaImageProcessor::StretchHistogram(*image, 0, nullptr, 0), S_OK) << format;
    EXPECT_EQ(QAVMMediaImageProcessor::StretchHistogram(*image, 31, nullptr, 1), bytes ? S_OK : E_FAIL) << format;
    EXPECT_EQ(QAVMMediaImageProcessor::StretchHistogram(*readOnly, 31, nullptr, 1), E_FAIL) << format;
    if (!bytes) continue;
    EXPECT_EQ(QAVMMediaImageProcessor::StretchHistogram(*makeImage(0, 0, format), 31, nullptr, 1), S_OK);
  }
}

}  // namespace
}  // namespace qav::test
