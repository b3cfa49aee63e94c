#include <QAVPixelImageComparator.h>

#include "comparison/ColourDifferences.h"

#include "support/Files.h"
#include "support/Test.h"

#include <bit>

namespace qav::test {
namespace {

using Doubles = std::vector<double>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Outcome {
  int result = 0;
  double mean = -1, percentage = -1, deviation = -1, maximum = -1, median = -1;
  int count = -1;
  Doubles entries;
};

template <class Compare>
Outcome run(Compare compare, QAVPixelImage* a, QAVPixelImage* b, double threshold, int sigmas,
            const std::string& directory = "/nowhere/") {
  Outcome o;
  double* entries = nullptr;
  o.result = compare(a, b, directory, threshold, sigmas, o.mean, o.count, o.percentage, o.deviation, o.maximum,
                     o.median, entries);
  if (entries) o.entries.assign(entries, entries + byteCount(*a) / static_cast<std::size_t>(a->GetBytesPerPixel()));
  delete[] entries;
  return o;
}

Outcome lab(const Image& a, const Image& b, double threshold, int sigmas) {
  return run(&QAVPixelImageComparator::ImageLabCompare, a.get(), b.get(), threshold, sigmas);
}

Outcome hdr(const Image& a, const Image& b, double threshold, int sigmas) {
  return run(&QAVPixelImageComparator::ImageHDRCompare, a.get(), b.get(), threshold, sigmas);
}

// The statistics of given differences, step by step.
Outcome plainStatistics(Doubles differences, double threshold, int sigmas, bool floating) {
  Outcome o{1, 0, 0, 0, 0, -1, 0, {}};
  Doubles exceedances;
  double sum = 0;
  for (double& d : differences) {
    if (floating && d > o.maximum) o.maximum = d;
    if (d < threshold) {
      d = 0;
    } else {
      exceedances.push_back(d);
      sum += d;
    }
  }
  o.count = static_cast<int>(exceedances.size());
  if (o.count > 0) {
    o.mean = sum / o.count;
    o.percentage = o.count * 100.0 / static_cast<double>(differences.size());
  }
  std::sort(exceedances.begin(), exceedances.end());
  if (!floating) {
    const std::size_t half = exceedances.size() / 2;
    o.maximum = o.count ? exceedances.back() : 0;
    o.median = !o.count                      ? 0
               : exceedances.size() % 2 == 1 ? exceedances[half]
                                             : (exceedances[half - 1] + exceedances[half]) / 2;
  }
  double squares = 0;
  for (std::size_t i = 0; i < exceedances.size(); ++i) {
    const double value = floating ? differences[i] : exceedances[i];
    squares += (value - o.mean) * (value - o.mean);
  }
  o.deviation = std::pow(squares / o.count, 0.5);
  if (sigmas != 0) {
    o.maximum = 0;
    for (double& d : differences)
      if (std::fabs(d - o.mean) > o.deviation * sigmas)
        d = 1000.0;
      else
        o.maximum = std::max(o.maximum, d);
    if (floating) o.maximum = static_cast<float>(o.maximum);
  }
  o.entries = differences;
  return o;
}

// All numbers to the last bit; any two not-a-numbers are the same.
void expectSame(const Outcome& found, const Outcome& expected) {
  const auto bits = [](double v) { return std::bit_cast<std::uint64_t>(std::isnan(v) ? kNaN : v); };
  EXPECT_EQ(found.result, expected.result);
  EXPECT_EQ(found.count, expected.count);
  const auto numbers = [&](const Outcome& o) {
    return std::vector{bits(o.mean), bits(o.percentage), bits(o.deviation), bits(o.maximum), bits(o.median)};
  };
  EXPECT_EQ(numbers(found), numbers(expected));
  ASSERT_EQ(found.entries.size(), expected.entries.size());
  for (std::size_t i = 0; i < found.entries.size(); ++i)
    ASSERT_EQ(bits(found.entries[i]), bits(expected.entries[i])) << i;
}

Image nearCopy(const QAVPixelImage& image, std::mt19937& random, unsigned oneIn) {
  Image copy = copyOf(image);
  for (std::size_t i = 0; i < byteCount(image); ++i)
    if (random() % oneIn == 0) copy->GetPixelsToModify()[i] = static_cast<unsigned char>(random());
  return copy;
}

TEST(Comparator, LabStatisticsOfEveryThreshold) {
  std::mt19937 random(5);
  const struct {
    int width, height;
    unsigned oneIn;
  } cases[] = {{1, 1, 1}, {2, 1, 1}, {7, 5, 2}, {33, 9, 300}, {64, 65, 1}, {201, 101, 7}, {3, 0, 1}};
  for (const auto& [width, height, oneIn] : cases) {
    for (const QAVPixelImageFormat format : {RGB888, RGBA8888}) {
      const Image a = randomImage(width, height, format, random), b = nearCopy(*a, random, oneIn);
      Doubles differences(static_cast<std::size_t>(width * height));
      colourDifferences(a->GetPixelsToRead(), b->GetPixelsToRead(), differences.size(),
                        static_cast<std::size_t>(a->GetBytesPerPixel()), differences.data());
      for (const double threshold : {-1.0, 0.0, 1e-300, 2.5, 20.0, 500.0, kNaN}) {
        for (const int sigmas : {0, 1, 2, -1}) {
          SCOPED_TRACE(testing::Message() << width << " x " << height << ", " << threshold << ", " << sigmas);
          expectSame(lab(a, b, threshold, sigmas), plainStatistics(differences, threshold, sigmas, false));
        }
      }
    }
  }
}

TEST(Comparator, EqualImages) {
  std::mt19937 random(6);
  const Image a = randomImage(5, 4, RGBA8888, random), b = copyOf(*a);
  b->SetTransparency(9);  // not compared
  const Outcome o = lab(a, b, 0.1, 2);
  expectSame(o, {1, 0, 0, kNaN, 0, 0, 0, Doubles(20)});
}

Image floatImage(int width, int height, QAVPixelImageFormat format, std::mt19937& random) {
  Image image = makeImage(width, height, format);
  const float extremes[] = {1.0f, 1.0001f, 0.0f, -0.5f, INFINITY, NAN, 0.99999f, 1e30f};
  for (std::size_t i = 0; i < byteCount(*image) / 4; ++i)
    image->GetFloatingPixelsToModify()[i] =
        random() % 64 == 0 ? extremes[random() % 8] : static_cast<float>(random() % 1000) / 900.0f;
  return image;
}

TEST(Comparator, HdrStatistics) {
  std::mt19937 random(7);
  for (int round = 0; round < 40; ++round) {
    const QAVPixelImageFormat format = round % 2 ? RGBFloat : RGBAFloat;
    const int width = 1 + below(40, random), height = 1 + below(20, random);
    const Image a = floatImage(width, height, format, random);
    const Image b = floatImage(width, height, round % 4 == 1 ? RGBAFloat : format, random);
    const std::size_t channels = format == RGBFloat ? 3 : 4;
    Doubles distances;
    for (int y = 0; y < height; ++y) {
      for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x) {
        float sum = 0;
        for (std::size_t k = 0; k < channels; ++k) {
          const float d = a->GetFloatingRow(y)[x * channels + k] - b->GetFloatingRow(y)[x * channels + k];
          sum += d * d;
        }
        distances.push_back(std::sqrt(sum));
      }
    }
    for (const double threshold : {0.0, 0.7, 1e9})
      for (const int sigmas : {0, 1, 3})
        expectSame(hdr(a, b, threshold, sigmas), plainStatistics(distances, threshold, sigmas, true));
  }
}

TEST(Comparator, RefusedImages) {
  for (const QAVPixelImageFormat first : kAllFormats) {
    for (const QAVPixelImageFormat second : kAllFormats) {
      const Image a = makeImage(3, 2, first), b = makeImage(3, 2, second);
      EXPECT_EQ(lab(a, b, 1, 0).result, (first == RGB888 && second == RGB888) ||
                                            (first == RGB888 && second == RGBA8888) ||
                                            (first == RGBA8888 && second == RGBA8888));
      EXPECT_EQ(hdr(a, b, 1, 0).result, (first == RGBFloat && (second == RGBFloat || second == RGBAFloat)) ||
                                            (first == RGBAFloat && second == RGBAFloat));
    }
    const Image a = makeImage(3, 2, first), wider = makeImage(4, 2, first), none;
    for (const auto& compare : {&lab, &hdr}) {
      const Outcome o = compare(a, wider, 1, 0);
      EXPECT_EQ(o.result, 0);
      EXPECT_EQ(o.count, -1);
      EXPECT_EQ(compare(a, none, 1, 0).result, 0);
    }
    EXPECT_EQ(run(&QAVPixelImageComparator::ImageLabCompare, nullptr, a.get(), 1, 0).result, 0);
    EXPECT_EQ(run(&QAVPixelImageComparator::ImageHDRCompare, nullptr, a.get(), 1, 0).result, 0);
  }
}

class ComparedFiles : public testing::Test {
 protected:
  std::string Write(const Image& image, const std::string& name) {
    EXPECT_EQ(image->WriteToFile(folder_.path(name), "TIFF"), S_OK);
    return folder_.path(name);
  }
  Image Read(const std::string& name) {
    return Image(QAVPixelImage::CreateFromFile(folder_.path(name), QAVReadOnly, 0));
  }
  int Compare(const std::string& a, const std::string& b, double scale, bool colour, bool relative) {
    return QAVPixelImageComparator::ImageCompare(a, b, folder_.path("out"), 1.0, 2, scale, o_.mean, o_.count,
                                                 o_.percentage, o_.deviation, o_.maximum, o_.median, colour, relative);
  }

  TemporaryFolder folder_;
  Outcome o_;
};

std::uint8_t clamped(double v) { return static_cast<std::uint8_t>(std::isnan(v) ? 0 : std::clamp(v, 0.0, 255.0)); }

std::vector<std::uint8_t> plainPicture(const Doubles& entries, double limit, bool colour) {
  std::vector<std::uint8_t> bytes;
  const auto add = [&](double r, double g, double b) {
    for (const double v : {r, g, b}) bytes.push_back(clamped(v));
  };
  for (const double d : entries) {
    const double g = d / limit <= 1 ? (1 - d / limit) * 255 : 0, h = d * 510 / limit;
    if (d == 0.0)
      add(255, 255, 255);
    else if (d == 1000.0)
      add(0, 0, 0);
    else if (!colour)
      add(g, g, g);
    else if (d <= limit / 2)
      add(0, h, 255 - h);
    else if (d <= limit)
      add(h - 255, 510 - h, 0);
    else
      add(255, 0, 0);
  }
  return bytes;
}

TEST_F(ComparedFiles, PicturesOfTheDifferences) {
  std::mt19937 random(8);
  const Image a = randomImage(40, 30, RGB888, random, Texture::Smooth), b = nearCopy(*a, random, 9);
  const std::string first = Write(a, "one.two.tif"), second = Write(b, "three");
  const Outcome expected = lab(a, b, 1.0, 2);
  ASSERT_GT(std::count(expected.entries.begin(), expected.entries.end(), 1000.0), 0);
  for (const double scale : {10.0, 3.0, 0.0, -5.0}) {
    for (const bool colour : {false, true}) {
      ASSERT_EQ(Compare(first, second, scale, colour, true), 1);
      EXPECT_EQ(o_.median, expected.median);
      EXPECT_EQ(o_.maximum, expected.maximum);
      const Image absolute = Read("out\\xAbsolutediff_one_three.TIFF"),
                  relative = Read("out\\xRelativediff_one_three.TIFF");
      ASSERT_TRUE(absolute && relative);
      EXPECT_EQ(bytesOf(*absolute), plainPicture(expected.entries, scale, colour)) << scale;
      EXPECT_EQ(bytesOf(*relative), plainPicture(expected.entries, expected.maximum, colour));
    }
  }
  EXPECT_EQ(folder_.count(), 4u);
}

TEST_F(ComparedFiles, FloatingPointPreviews) {
  std::mt19937 random(9);
  for (const QAVPixelImageFormat format : {RGBFloat, RGBAFloat}) {
    const Image images[] = {floatImage(9, 7, format, random), floatImage(9, 7, format, random)};
    const std::string first = Write(images[0], ".hidden"), second = Write(images[1], "b.tif");
    ASSERT_EQ(Compare(first, second, 1.0, false, false), 1);
    EXPECT_EQ(o_.median, -1.0);
    ASSERT_TRUE(Read("out\\xAbsolutediff__b.TIFF"));
    EXPECT_FALSE(Read("out\\xRelativediff__b.TIFF"));
    for (const int side : {0, 1}) {
      const Image preview = Read(side ? "out\\iLDR2.TIFF" : "out\\iLDR1.TIFF");
      ASSERT_TRUE(preview && preview->GetFormat() == RGB888);
      const std::size_t channels = format == RGBFloat ? 3 : 4;
      for (std::size_t i = 0; i < 9 * 7 * 3; ++i) {
        const float value = images[side]->GetFloatingPixelsToRead()[i / 3 * channels + i % 3];
        ASSERT_EQ(preview->GetPixelsToRead()[i], value > 1 ? 255 : clamped(value * 255.0f)) << value;
      }
    }
  }
}

TEST_F(ComparedFiles, FilesThatCannotBeCompared) {
  const std::string rgb = Write(makeImage(4, 3, RGB888), "rgb"), tall = Write(makeImage(4, 4, RGB888), "tall"),
                    grey = Write(makeImage(4, 3, L8), "grey"), rgba = Write(makeImage(4, 3, RGBA8888), "rgba"),
                    floats = Write(makeImage(4, 3, RGBFloat), "floats"), text = folder_.write("text", {});
  const std::string pairs[][2] = {{rgb, tall}, {rgb, grey},  {grey, rgb},   {grey, grey},  {rgba, rgb}, {rgb, text},
                                  {text, rgb}, {rgb, "/no"}, {floats, rgb}, {rgb, floats}, {"", ""},    {text, text}};
  for (const auto& [a, b] : pairs) EXPECT_EQ(Compare(a, b, 1.0, true, true), 0) << a << " " << b;
  EXPECT_EQ(folder_.count(), 6u);
  EXPECT_EQ(Compare(rgb, rgba, 1.0, true, false), 1);
}

}  // namespace
}  // namespace qav::test
