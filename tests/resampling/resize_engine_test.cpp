#include <QAVMMResizeEngine.h>

#include "resampling/Definition.h"
#include "support/Checks.h"
#include "support/Test.h"

namespace qav::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr const char* kFile = " QAVMMediaRasterProcessor_Base.m/src/QAVMMResizeEngine:";

std::vector<float> floatsOf(const QAVPixelImage& image) {
  const float* const samples = image.GetFloatingPixelsToRead();
  return {samples, samples + byteCount(image) / sizeof(float)};
}

Image randomSamples(int width, int height, QAVPixelImageFormat format, std::mt19937& random, Texture texture) {
  if (format < RGBFloat) return randomImage(width, height, format, random, texture);
  Image image = makeImage(width, height, format);
  float* const samples = image->GetFloatingPixelsToModify();
  const float specials[] = {-0.0f, std::numeric_limits<float>::infinity(), 1e38f, -3e-45f, -0.0f, -0.0f};
  for (std::size_t i = 0; i < byteCount(*image) / sizeof(float); ++i) {
    samples[i] = static_cast<float>(random() % 4096) / 1024.0f - 1.0f;
    if (texture == Texture::Extremes && random() % 8 == 0) samples[i] = specials[random() % std::size(specials)];
  }
  return image;
}

// Equal bits, except that any not-a-number equals any other.
bool sameFloats(const std::vector<float>& a, const std::vector<float>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](float x, float y) {
    return std::memcmp(&x, &y, sizeof x) == 0 || (std::isnan(x) && std::isnan(y));
  });
}

::testing::AssertionResult scalesAsDefined(QAVPixelImage& image, int width, int height, QAVMMGenericFilter* filter) {
  const auto [w, h] = extentOf(image);
  const Image result(
      QAVMMResizeEngine(filter).scale(&image, static_cast<unsigned>(width), static_cast<unsigned>(height)));
  const bool floating = image.GetFormat() >= RGBFloat;
  const int channels = image.GetBytesPerPixel() / (floating ? 4 : 1);
  const bool same =
      floating ? sameFloats(floatsOf(*result), definedScale(floatsOf(image), w, h, channels, width, height, filter))
               : bytesOf(*result) == definedScale(bytesOf(image), w, h, channels, width, height, filter);
  if (same) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << w << " x " << h << " to " << width << " x " << height << ", format "
                                       << image.GetFormat() << ", support " << (filter ? filter->support : 0.0);
}

// Ratios that are rich in exact halves, or whose weights are exact binary fractions; long, thin and wide pictures; and
// any sizes.
TEST(ResizeEngine, EveryKernelBetweenManySizes) {
  struct Sizes {
    int w, h, toW, toH;
  };
  std::vector<Sizes> all = {{128, 96, 64, 48},  {64, 40, 128, 80},  {120, 90, 20, 15}, {96, 64, 144, 96},
                            {90, 60, 30, 20},   {40, 28, 120, 84},  {105, 70, 21, 14}, {96, 40, 64, 30},
                            {60, 44, 80, 11},   {200, 30, 50, 40},  {301, 3, 7, 3},    {7, 2, 4, 2},
                            {3, 301, 3, 5},     {700, 2, 11, 1},    {2, 900, 1, 3},    {1, 1, 130, 67},
                            {257, 129, 86, 43}, {130, 70, 130, 35}, {130, 70, 65, 70}, {65, 33, 130, 66},
                            {80, 80, 53, 160},  {1200, 4, 1800, 6}, {6, 1100, 9, 1650}};
  std::mt19937 random(3);
  const auto size = [&] { return 1 + below(random() % 4 == 0 ? 150 : 30, random); };
  for (int i = 0; i < 60; ++i) {
    const int w = size(), h = size();
    all.push_back({w, h, random() % 8 == 0 ? w : size(), random() % 8 == 0 ? h : size()});
  }
  const auto kernels = readyKernels();
  atEveryLevel([&] {
    for (const auto& [w, h, toW, toH] : all)
      for (const auto& kernel : kernels)
        for (const Texture texture : {w % 11 ? Texture::Noise : Texture::Uniform, Texture::Extremes})
          for (const auto format : {RGB888, RGBA8888, RGBFloat, RGBAFloat})
            ASSERT_TRUE(scalesAsDefined(*randomSamples(w, h, format, random, texture), toW, toH, kernel.get()));
  });
}

// Not what its base class is.
class InvertedTriangle : public QAVMMTriangleFilter {
 public:
  double Evaluate(double x) override { return 1.5 - QAVMMTriangleFilter::Evaluate(x); }
};

TEST(ResizeEngine, UnusualKernels) {
  std::mt19937 random(9);
  InvertedTriangle inverted;
  FunctionFilter unusual[] = {{1.3, [](double) { return 0.0; }},
                              {2.0, [](double x) { return x < 0.3 ? 1.0 : std::nan(""); }},
                              {2.0, [](double x) { return x < 0.3 ? 1.0 : kInfinity; }},
                              {1.0, [](double x) { return -1e300 * x; }},
                              {2.0, [](double x) { return 1e6 * x + 1e-3; }},
                              {1.5, [](double x) { return 40.0 * x - 0.7; }},
                              {-0.6, [](double) { return 1.0; }},
                              {30.0, [](double x) { return std::sin(3 * x) + 0.5; }},
                              {3.0, [](double x) { return x < 0 ? -0.3 : 0.31; }}};
  atEveryLevel([&] {
    for (FunctionFilter& filter : unusual) {
      const int toW = filter.support < 0 ? 40 : 29, toH = filter.support < 0 ? 31 : 44;
      for (const auto format : {RGB888, RGBA8888, RGBAFloat}) {
        const Texture texture = format == RGBAFloat ? Texture::Extremes : Texture::Noise;
        ASSERT_TRUE(scalesAsDefined(*randomSamples(40, 31, format, random, texture), toW, toH, &filter));
      }
    }
    ASSERT_TRUE(scalesAsDefined(*randomImage(40, 31, RGB888, random), 20, 50, nullptr));
    ASSERT_TRUE(scalesAsDefined(*randomImage(40, 31, RGBA8888, random), 60, 12, &inverted));
  });
}

TEST(ResizeEngine, RefusalsAndTheirReports) {
  QAVMMCatmullRomFilter kernel;
  QAVMMResizeEngine engine(&kernel);
  const struct {
    QAVPixelImageFormat format;
    const char* report;
  } cases[] = {{L8, ""},
               {LA88, "TRUE __DoesResizeSupportFormat(src->GetFormat())"},
               {BitonalRuns, "TRUE __DoesResizeSupportFormat(src->GetFormat())"},
               {RGB161616, "TRUE __DoesResizeSupportFormat(src->GetFormat())"},
               {NoPixelStorage, "Pointer src->getSpec()"}};
  for (const auto& [format, report] : cases) {
    const CheckRecorder recorder;
    EXPECT_EQ(engine.scale(makeImage(4, 4, format).get(), 2, 2), nullptr);
    const std::string expected = report + std::string(kFile) + (format == NoPixelStorage ? "78" : "79");
    EXPECT_EQ(recorder.reports(), *report ? std::vector{expected} : std::vector<std::string>()) << format;
  }
  const CheckRecorder recorder;
  EXPECT_EQ(engine.scale(nullptr, 2, 2), nullptr);
  EXPECT_EQ(recorder.reports(), std::vector{"Pointer src" + std::string(kFile) + "77"});
  for (const int format : {-1, 4, 5, 9, 12, 32, 34, 1000000, std::numeric_limits<int>::min()})
    EXPECT_FALSE(engine.__DoesResizeSupportFormat(static_cast<QAVPixelImageFormat>(format))) << format;
}

TEST(ResizeEngine, SizesThatAreEmptyOrCannotBe) {
  QAVMMCatmullRomFilter kernel;
  QAVMMResizeEngine engine(&kernel);
  const auto expectZeros = [&](QAVPixelImage& source, unsigned width, unsigned height) {
    const Image result(engine.scale(&source, width, height));
    EXPECT_EQ(extentOf(*result), std::pair(static_cast<int>(width), static_cast<int>(height)));
    EXPECT_EQ(bytesOf(*result), std::vector<std::uint8_t>(width * height * 3));
  };
  std::mt19937 random(1);
  expectZeros(*randomImage(5, 4, RGB888, random), 0, 4);
  expectZeros(*randomImage(5, 4, RGB888, random), 3, 0);
  expectZeros(*makeImage(0, 4, RGB888), 3, 2);
  expectZeros(*makeImage(4, 0, RGB888), 4, 6);
  expectZeros(*makeImage(0, 0, RGB888), 3, 2);
  ReadOnlyImage readOnly(6, 4, RGB888);
  expectZeros(readOnly, 3, 2);
  for (const auto& [w, h] : {std::pair{0x80000000u, 1u}, {1u, 0xFFFFFFFFu}})
    EXPECT_THROW(engine.scale(makeImage(2, 2, RGB888).get(), w, h), std::bad_alloc);
}

TEST(ResizeEngine, AThrowingKernelAndAKernelThatCounts) {
  int calls = 0;
  FunctionFilter filter(1.0, [&](double) { return ++calls > 30 ? throw std::runtime_error("no more") : 1.0; });
  std::mt19937 random(1);
  const Image image = randomImage(20, 20, RGBA8888, random);
  EXPECT_THROW(QAVMMResizeEngine(&filter).scale(image.get(), 12, 17), std::runtime_error);
  EXPECT_EQ(image->AddRef(), 2u);
  image->Release();
  calls = -1000000;
  const Image same(QAVMMResizeEngine(&filter).scale(image.get(), 20, 20));
  EXPECT_EQ(calls, -1000000);
  EXPECT_EQ(bytesOf(*same), bytesOf(*image));
}

// A class of a caller's own may answer anything.
class OneBitImage : public QAVPixelImage {
 public:
  using QAVPixelImage::QAVPixelImage;
  int GetBitsPerPixel() override { return 1; }
};
class EightByteImage : public QAVPixelImage {
 public:
  using QAVPixelImage::QAVPixelImage;
  int GetBytesPerPixel() override { return 8; }
};

TEST(ResizeEngine, OneBitRowsExpand) {
  std::mt19937 random(2);
  QAVMMTriangleFilter kernel;
  OneBitImage source(8, 2, RGB888);
  fill(source.GetPixelsToModify(), 48, Texture::Noise, random);
  EightByteImage target(30, 2, RGB888);
  QAVMMResizeEngine(&kernel).horizontalFilter(&source, 24, 2, &target, 30, 2);
  const QAVMMWeightsTable table(&kernel, 30, 24);
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 30; ++x) {
      const auto bitAt = [&](int j) { return source.GetPixelsToRead()[y * 24 + j / 8] >> (7 - j % 8) & 1; };
      const double sum = weightedSum(table.contributions[x], bitAt);
      ASSERT_EQ(target.GetPixelsToRead()[y * 90 + x], storedSum<unsigned char>(sum * 255.0)) << x;
    }
  const Image untouched = makeImage(30, 2, RGB888), sixteen = makeImage(30, 2, RGBA16161616);
  QAVMMResizeEngine(&kernel).horizontalFilter(&source, 24, 2, untouched.get(), 30, 2);
  QAVMMResizeEngine(&kernel).horizontalFilter(&source, 24, 2, sixteen.get(), 30, 2);
  EXPECT_EQ(bytesOf(*untouched), std::vector<std::uint8_t>(180));
}

TEST(ResizeEngine, CopiesReportMissingBuffers) {
  const struct {
    QAVPixelImageFormat source, target;
    bool noSource;
    const char* expression;
    const char* lines[2];
  } cases[] = {{RGBAFloat, RGBAFloat, true, "src->GetFloatingPixelsToRead()", {"167", "323"}},
               {RGBFloat, RGB888, false, "dst->GetFloatingPixelsToModify()", {"168", "324"}},
               {LA88, LA88, true, "src->GetPixelsToRead()", {"173", "329"}},
               {L8, RGBFloat, false, "dst->GetPixelsToModify()", {"174", "330"}}};
  QAVMMResizeEngine engine(nullptr);
  for (const auto& [source, target, noSource, expression, lines] : cases) {
    QAVPixelImage without(3, 2, source, nullptr, QAVDeallocatePixelsByImage);
    QAVPixelImage with(3, 2, source), to(3, 2, target);
    const CheckRecorder recorder;
    engine.horizontalFilter(noSource ? &without : &with, 3, 2, &to, 3, 2);
    engine.verticalFilter(noSource ? &without : &with, 3, 2, &to, 3, 2);
    const std::string start = std::string("Pointer ") + expression + kFile;
    EXPECT_EQ(recorder.reports(), (std::vector{start + lines[0], start + lines[1]}));
  }
  const CheckRecorder recorder;
  std::mt19937 random(1);
  const Image source = randomImage(3, 2, LA88, random), target = makeImage(3, 2, LA88),
              runs = makeImage(3, 2, BitonalRuns);
  engine.verticalFilter(source.get(), 3, 2, target.get(), 3, 2);
  EXPECT_EQ(bytesOf(*target), bytesOf(*source));
  engine.horizontalFilter(runs.get(), 3, 2, target.get(), 3, 2);
  engine.horizontalFilter(nullptr, 3, 2, target.get(), 3, 2);
  engine.verticalFilter(source.get(), 3, 2, nullptr, 3, 2);
  EXPECT_EQ(recorder.reports(), std::vector<std::string>());
}

// Sizes, formats and buffers that do not belong together: whatever has a place is as defined, nothing else is touched.
TEST(ResizeEngine, PassesWithSizesThatAreNotTheImages) {
  QAVMMTriangleFilter kernel;
  QAVMMResizeEngine engine(&kernel);
  std::mt19937 random(4);
  const Image source = randomImage(10, 6, RGBA8888, random);
  const std::vector<std::uint8_t> rows = definedPass(bytesOf(*source), 10, 6, 4, 7, true, &kernel);
  const std::vector<std::uint8_t> columns = definedPass(bytesOf(*source), 10, 6, 4, 4, false, &kernel);
  atEveryLevel([&] {
    for (const auto format : {RGB888, RGBA8888})
      for (const auto& [w, h] : {std::pair{7, 6}, {7, 3}, {5, 5}, {12, 9}, {1, 1}, {0, 3}}) {
        const Image wide = makeImage(w, h, format), tall = makeImage(w, h, format);
        engine.horizontalFilter(source.get(), 10, 6, wide.get(), 7, 6);
        engine.verticalFilter(source.get(), 10, 6, tall.get(), 10, 4);
        std::vector<std::uint8_t> expected(byteCount(*wide)), expectedColumns(columns);
        const std::size_t stride = static_cast<std::size_t>(w) * (format == RGB888 ? 3 : 4);
        for (std::size_t y = 0; y < 6; ++y)
          for (std::size_t i = 0; i < 28; ++i)
            if (y * stride < expected.size() && y * stride + i < expected.size())
              expected[y * stride + i] = rows[y * 28 + i];
        expectedColumns.resize(byteCount(*tall));
        ASSERT_EQ(bytesOf(*wide), expected) << w << " x " << h << ", format " << format;
        ASSERT_EQ(bytesOf(*tall), expectedColumns) << w << " x " << h << ", format " << format;
      }
    for (const auto format : {L8, LA88, BitonalRuns, RGBFloat, RGB888}) {
      const Image target = makeImage(3, 3, format), sink = makeImage(5, 5, RGBA8888);
      for (const unsigned huge : {0u, 40u, 0xFFFFFFFFu}) {
        engine.horizontalFilter(source.get(), 100, 6, target.get(), 7, huge);
        engine.verticalFilter(source.get(), 10, 60, target.get(), huge, 7);
        engine.horizontalFilter(target.get(), 3, huge, sink.get(), 1, 6);
      }
    }
  });
}

// A pass of an image into itself reads what it has written before.
TEST(ResizeEngine, PassesInPlace) {
  QAVMMTriangleFilter kernel;
  std::mt19937 random(4);
  const Image image = randomImage(9, 2, RGB888, random);
  std::vector<std::uint8_t> expected = bytesOf(*image);
  const QAVMMWeightsTable table(&kernel, 5, 9);
  for (std::size_t y = 0; y < 2; ++y)
    for (std::size_t x = 0; x < 5; ++x)
      for (std::size_t c = 0; c < 3; ++c) {
        const auto sampleAt = [&](int j) { return expected[y * 27 + static_cast<std::size_t>(j) * 3 + c]; };
        expected[y * 27 + x * 3 + c] = storedSum<std::uint8_t>(weightedSum(table.contributions[x], sampleAt));
      }
  QAVMMResizeEngine(&kernel).horizontalFilter(image.get(), 9, 2, image.get(), 5, 2);
  EXPECT_EQ(bytesOf(*image), expected);
}

}  // namespace
}  // namespace qav::test
