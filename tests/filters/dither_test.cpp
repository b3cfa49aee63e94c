#include <QAVMMediaImageProcessor.h>

#include "kernels/VariableDiffusionTable.h"
#include "support/Test.h"

namespace qav::test {
namespace {

struct Share {
  int dx, dy, weight;
};
struct Method {
  int scale;
  std::vector<Share> shares;
};

const Method kMethods[4] = {
    {16, {{1, 0, 7}, {-1, 1, 3}, {0, 1, 5}, {1, 1, 1}}},
    {16, {{1, 0, 8}, {-3, 1, 1}, {-2, 1, 1}, {-1, 1, 2}, {0, 1, 4}}},
    {48,
     {{1, 0, 7}, {2, 0, 5}, {-2, 1, 8}, {0, 1, 7}, {1, 1, 5}, {2, 1, 3}, {-2, 2, 4}, {0, 2, 5}, {1, 2, 3}, {2, 2, 1}}},
    {42,
     {{1, 0, 8}, {2, 0, 4}, {-2, 1, 6}, {0, 1, 8}, {1, 1, 4}, {2, 1, 2}, {-2, 2, 3}, {0, 2, 4}, {1, 2, 2}, {2, 2, 1}}},
};

void diffusePlainly(Bytes& pixels, int width, int height, const Method& method) {
  std::vector<int> sums(pixels.size());
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto at = static_cast<std::size_t>(y * width + x);
      const int s = pixels[at] * method.scale + sums[at];
      const bool white = s > 128 * method.scale - 1;
      const int e = s / method.scale - (white ? 255 : 0);
      pixels[at] = white ? 255 : 0;
      for (const Share& share : method.shares) {
        const int tx = x + share.dx, ty = y + share.dy;
        if (tx >= 0 && tx < width && ty < height) sums[static_cast<std::size_t>(ty * width + tx)] += e * share.weight;
      }
    }
  }
}

// Variable diffusion with the coefficients in use kept in entry 0 of one table, from image to image.
class SharedTable {
 public:
  SharedTable() {
    std::copy(std::begin(kernels::kVariableDiffusionShares), std::end(kernels::kVariableDiffusionShares),
              table_.begin());
  }
  void diffuse(Bytes& pixels, int width, int height) {
    std::vector<std::uint32_t> row(static_cast<std::size_t>(width) + 2);
    for (int y = 0; y < height; ++y) {
      const int direction = y % 2 == 0 ? 1 : -1;
      for (int n = 0; n < width; ++n) {
        const int x = direction > 0 ? n : width - 1 - n;
        std::uint8_t& pixel = pixels[static_cast<std::size_t>(y * width + x)];
        std::uint32_t* const here = &row[static_cast<std::size_t>(x) + 1];
        const std::uint32_t s = pixel * 4194304u + *here;
        const int q = static_cast<std::int32_t>(s) >> 22;
        const int e = q > 127 ? q - 255 : q;
        table_[0] = table_[pixel < 128 ? pixel : 255u - pixel];
        pixel = q > 127 ? 255 : 0;
        send(here[direction], e, table_[0].right);
        send(here[-direction], e, table_[0].downLeft);
        *here = 0;
        send(*here, e, table_[0].down);
      }
    }
  }
  bool hasWrapped() const { return hasWrapped_; }

 private:
  void send(std::uint32_t& sum, int error, int share) {
    const std::int64_t exact = static_cast<std::int32_t>(sum) + std::int64_t{error} * share;
    sum = static_cast<std::uint32_t>(exact);
    hasWrapped_ = hasWrapped_ || exact != static_cast<std::int32_t>(exact);
  }

  bool hasWrapped_ = false;
  std::array<kernels::DiffusionShares, 128> table_;
};

Bytes dithered(int width, int height, const Bytes& pixels, int type) {
  GuardedImage image(*imageOf(width, height, L8, pixels), static_cast<std::size_t>(width % 5));
  EXPECT_EQ(QAVMMediaImageProcessor::Dither(*image, static_cast<QAVMMIDitherType>(type), nullptr, 0, 0), S_OK);
  EXPECT_TRUE(image.guardsIntact()) << width << "x" << height;
  return bytesOf(*image);
}

Bytes texture(std::size_t count, int number, std::mt19937& random) {
  Bytes bytes(count);
  if (number < 4) fill(bytes.data(), count, kTextures[number], random);
  if (number == 4)
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(i * 255 / count);
  return bytes;
}

void expectFixedMethods(int width, int height, int number, std::mt19937& random) {
  const Bytes pixels = texture(static_cast<std::size_t>(width * height), number, random);
  for (int type = 0; type < 4; ++type) {
    Bytes expected = pixels;
    diffusePlainly(expected, width, height, kMethods[type]);
    ASSERT_EQ(dithered(width, height, pixels, type), expected)
        << "method " << type << ", " << width << "x" << height << ", texture " << number;
  }
}

TEST(Dither, FixedWeightsAreThoseOfTheSerialLoopAtEverySize) {
  std::mt19937 random(3);
  atEveryLevel([&] {
    for (int width = 1; width <= 70; ++width)
      for (int height = 1; height <= 70; height += height < 6 || height > 60 ? 1 : 7)
        expectFixedMethods(width, height, (width + height) % 5, random);
    // Rows longer than the slant of the front, several fronts, and a last one of one, two or many rows.
    for (const auto& [width, height] : {std::pair{1000, 64}, {777, 65}, {321, 130}, {283, 191}, {16, 300}, {3000, 3}})
      for (int number = 0; number < 5; ++number) expectFixedMethods(width, height, number, random);
  });
}

TEST(Dither, VariableWeightsAreThoseOfOneTableSharedByAllCalls) {
  std::mt19937 random(5);
  SharedTable shared;
  // Black and white pixels use whatever coefficients came before them, also those of an earlier image.
  const auto adversarial = [&](std::size_t count) {
    Bytes bytes(count);
    const std::size_t extremes = random() % (count + 1);
    for (std::size_t i = 0; i < count; ++i)
      bytes[i] = i < extremes || random() % 4 ? (random() & 1 ? 255 : 0) : static_cast<std::uint8_t>(random());
    return bytes;
  };
  for (int round = 0; round < 6000; ++round) {
    const int width = 1 + below(70, random), height = 1 + below(20, random);
    const auto count = static_cast<std::size_t>(width * height);
    const Bytes pixels = round % 2 ? adversarial(count) : texture(count, round / 2 % 5, random);
    Bytes expected = pixels;
    shared.diffuse(expected, width, height);
    ASSERT_EQ(dithered(width, height, pixels, 4), expected) << width << "x" << height << ", round " << round;
  }
}

// White pixels cannot take up an error, so weights that send all errors of the rows to one column pile them up there.
TEST(Dither, VariableWeightsWrapWhereErrorsPileUp) {
  constexpr int width = 201, height = 200, middle = width / 2;
  Bytes pixels(width * height, 255);
  std::fill_n(pixels.begin(), width, std::uint8_t{70});
  for (int y = 1; y < height; ++y) {
    pixels[static_cast<std::size_t>(y * width + (y % 2 ? width - 1 : 0))] = 178;
    pixels[static_cast<std::size_t>(y * width + middle)] = 253;
  }
  SharedTable shared;
  Bytes expected = pixels;
  shared.diffuse(expected, width, height);
  EXPECT_TRUE(shared.hasWrapped());
  EXPECT_EQ(dithered(width, height, pixels, 4), expected);
}

TEST(Dither, ThresholdIsTheLowByteAndServesEveryLaterCall) {
  Bytes ramp(256 * 3 + 1);
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<std::uint8_t>(i);
  atEveryLevel([&] {
    for (const auto& [stored, threshold] : {std::pair{127, 127}, {300, 44}, {-1, 255}, {384, 128}, {0, 0}}) {
      QAVMMediaImageProcessor::SetDitherThreshold(stored);
      Bytes expected = ramp;
      for (auto& byte : expected) byte = static_cast<std::uint8_t>(byte > threshold ? 255 : 0);
      for (int call = 0; call < 2; ++call)
        ASSERT_EQ(dithered(static_cast<int>(ramp.size()), 1, ramp, 5), expected) << stored;
    }
  });
  QAVMMediaImageProcessor::SetDitherThreshold(127);
  for (int type = 0; type < 6; ++type)
    for (const std::uint8_t value : Bytes{0, 255})
      EXPECT_EQ(dithered(9, 9, Bytes(81, value), type), Bytes(81, value)) << type;
  EXPECT_EQ(dithered(200, 1, Bytes(200, 64), 0), Bytes(200, 0));
}

TEST(Dither, StatusesAndTheConversionsThatStay) {
  const auto type = [](int number) { return static_cast<QAVMMIDitherType>(number); };
  for (const QAVPixelImageFormat format : kAllFormats) {
    for (const int number : {0, 4, 5, 6, -1}) {
      for (const bool bitonal : {false, true}) {
        const Image image = makeImage(5, 4, format);
        const HRESULT status = QAVMMediaImageProcessor::Dither(*image, type(number), nullptr, bitonal, 1);
        const bool runs = format == BitonalRuns, none = format == NoPixelStorage;
        EXPECT_EQ(status, runs ? S_OK : none || number > 5 || number < 0 ? E_FAIL : S_OK) << format << " " << number;
        EXPECT_EQ(image->GetFormat(), runs || none ? format : bitonal ? BitonalRuns : L8) << format << " " << number;
      }
    }
  }
  const Image runs = makeImage(5, 4, BitonalRuns);
  EXPECT_EQ(QAVMMediaImageProcessor::Dither(*runs, type(9), nullptr, 0, 1), S_OK);
  EXPECT_EQ(QAVMMediaImageProcessor::Dither(*runs, type(0), nullptr, 1, 0), E_FAIL);
  // Without a writable buffer nothing follows, not even the conversion to one bit.
  const Image readOnly(new ReadOnlyImage(5, 4, RGB888));
  EXPECT_EQ(QAVMMediaImageProcessor::Dither(*readOnly, type(6), nullptr, 1, 0), E_FAIL);
  EXPECT_EQ(readOnly->GetFormat(), L8);
  for (const int number : {0, 2, 4, 5, 6}) {
    const Image empty = makeImage(0, 7, RGBA8888);
    EXPECT_EQ(QAVMMediaImageProcessor::Dither(*empty, type(number), nullptr, 0, 0), number > 5 ? E_FAIL : S_OK);
    EXPECT_EQ(empty->GetFormat(), L8);
  }
}

}  // namespace
}  // namespace qav::test
