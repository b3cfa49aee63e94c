#include <QAVMMediaImageProcessor.h>

#include "filters/FilterReference.h"
#include "support/Test.h"

namespace qav::test {
namespace {

using Processor = QAVMMediaImageProcessor;

std::vector<float> reported;
void record(float done) { reported.push_back(done); }

std::vector<float> ramp(int rows, float step) {
  std::vector<float> values{0.0f};
  float done = 0.0f;
  for (int i = 0; i < rows; ++i) values.push_back(done += step);
  values.push_back(1.0f);
  return values;
}

constexpr QAVMMIFilterType filterType(int number) { return static_cast<QAVMMIFilterType>(number); }

bool isKernel(int type) {
  return std::any_of(std::begin(kKernelDefinitions), std::end(kKernelDefinitions),
                     [=](const KernelDefinition& d) { return d.type == type; });
}

bool turnsGrey(int type) { return type >= 10 && type <= 22 && type != 17 && type != 18; }

Picture pictureOf(const QAVPixelImage& image) {
  const auto [width, height] = extentOf(image);
  return {width, height, image.GetBytesPerPixel(), bytesOf(image)};
}

Picture expectedOf(const QAVPixelImage& image, int type, int passes) {
  const Image grey = copyOf(image);
  if (turnsGrey(type)) grey->ConvertToFormat(L8);
  Picture p = pictureOf(*grey);
  if (type == QAVMMIFilterOpening || type == QAVMMIFilterClosing) {
    const bool opening = type == QAVMMIFilterOpening;
    p = filteredOnce(p, opening ? QAVMMIFilterMinimum : QAVMMIFilterMaximum);
    return filteredOnce(p, opening ? QAVMMIFilterMaximum : QAVMMIFilterMinimum);
  }
  for (int pass = 0; pass < (isKernel(type) ? passes : 1); ++pass) p = filteredOnce(p, filterType(type));
  return p;
}

std::vector<float> expectedProgress(int type, int passes, int height) {
  const float rows = static_cast<float>(height);
  if (isKernel(type)) return ramp(passes * height, static_cast<float>(passes) / rows);
  std::vector<float> all = ramp(height, 1.0f / rows);
  if (type >= QAVMMIFilterOpening) all.insert(all.end(), all.begin(), all.end());
  return all;
}

// The status that a filter gives for a picture that is neither empty nor read-only.
HRESULT expectedStatus(int type, QAVPixelImageFormat format) {
  if (type < 0 || type > 27 || type == 17 || type == 18) return E_NOTIMPL;
  if (type == QAVMMIFilterMedian) return format == L8 || format == RGB888 ? S_OK : E_NOTIMPL;
  if (type > QAVMMIFilterMedian) return format == L8 ? S_OK : E_FAIL;
  if (turnsGrey(type)) return format == NoPixelStorage ? E_FAIL : S_OK;
  return format <= RGBA8888 ? S_OK : E_FAIL;
}

// Vectors are aligned to the caller's memory, and the first and last of a row reach beyond it.
void compareOn(const QAVPixelImage& image, int type, int passes, std::size_t misalignment = 0) {
  GuardedImage filtered(image, misalignment);
  reported.clear();
  ASSERT_EQ(Processor::Filter(*filtered, filterType(type), passes, record, 1), S_OK);
  const Picture expected = expectedOf(image, type, passes);
  ASSERT_EQ(bytesOf(*filtered), expected.bytes)
      << "type " << type << ", " << expected.width << "x" << expected.height << "x" << expected.channels;
  ASSERT_EQ(reported, expectedProgress(type, passes, expected.height));
  ASSERT_TRUE(filtered.guardsIntact()) << "type " << type << ", " << expected.width << ", " << misalignment;
}

TEST(Filter, EveryTypeGivesItsDefinitionAndReportsEveryRow) {
  std::mt19937 random(2);
  atEveryLevel([&] {
    for (int width = 1; width <= 300; width += width < 70 ? 1 : 33) {
      const int height = 1 + below(width < 20 ? 20 : 5, random);
      const Texture texture = kTextures[random() % 4];
      for (QAVPixelImageFormat format : kByteFormats) {
        const Image image = randomImage(width, height, format, random, texture);
        for (int type = 0; type < 28; ++type)
          if (expectedStatus(type, format) == S_OK)
            compareOn(*image, type, 1 + below(3, random), random() % 2 ? 0 : random() % 70);
      }
    }
  });
}

// Colours that differ by (21, -9, 37) have one key; which of them is the median depends on the steps of the sort.
TEST(Filter, ColourMedianKeepsTheOrderOfItsSortAmongEqualKeys) {
  std::mt19937 random(3);
  atEveryLevel([&] {
    for (int round = 0; round < 40; ++round) {
      const Image image = makeImage(1 + below(60, random), 6, RGB888);
      unsigned char* bytes = image->GetPixelsToModify();
      for (std::size_t i = 0; i < byteCount(*image); i += 3) {
        const auto step = random() % 4, other = random() % 8 ? 0 : random() % 30;
        bytes[i] = static_cast<unsigned char>(50 + 21 * step + other);
        bytes[i + 1] = static_cast<unsigned char>(90 - 9 * step);
        bytes[i + 2] = static_cast<unsigned char>(20 + 37 * step);
      }
      compareOn(*image, QAVMMIFilterMedian, 1);
    }
  });
}

// Each colour fills a neighbourhood, so it is the median there.
TEST(Filter, ColourMedianTellsEveryGreenAndBlue) {
  atEveryLevel([&] {
    const Image image = makeImage(3 * 256, 1, RGB888);
    unsigned char* const bytes = image->GetPixelsToModify();
    for (int colour = 0; colour < 0x400; ++colour) {
      for (int x = 0; x < 3 * 256; ++x) {
        bytes[3 * x] = static_cast<unsigned char>(colour / 256 * 85);
        bytes[3 * x + 1] = static_cast<unsigned char>(colour % 256);
        bytes[3 * x + 2] = static_cast<unsigned char>(x / 3);
      }
      const auto before = bytesOf(*image);
      ASSERT_EQ(Processor::Filter(*image, QAVMMIFilterMedian, 1, nullptr, 1), S_OK);
      ASSERT_EQ(bytesOf(*image), before) << colour;
    }
  });
}

TEST(Filter, ChecksInOrderAndLeavesRefusedImagesAlone) {
  std::mt19937 random(4);
  for (QAVPixelImageFormat format : kAllFormats) {
    for (int type : {-1, 0, 5, 9, 10, 12, 15, 16, 17, 18, 19, 22, 23, 24, 25, 26, 27, 28, 1 << 30}) {
      const Image image = makeImage(5, 4, format);
      if (image->GetPixelsToModify()) fill(image->GetPixelsToModify(), byteCount(*image), Texture::Noise, random);
      const auto before = bytesOf(*image);
      for (int passes : {0, -1, -2147483647 - 1}) {
        EXPECT_EQ(Processor::Filter(*image, filterType(type), passes, nullptr, 1), E_FAIL);
        EXPECT_EQ(image->GetFormat(), format);
        EXPECT_EQ(bytesOf(*image), before);
      }
      const HRESULT expected = expectedStatus(type, format);
      const Image created(Processor::CreateFiltered(*image, filterType(type), 1, nullptr));
      EXPECT_EQ(created != nullptr, expected == S_OK && format != BitonalRuns) << type << " on format " << format;
      // The last argument makes no difference.
      EXPECT_EQ(Processor::Filter(*image, filterType(type), 1, nullptr, 0), expected) << type << " on " << format;
      EXPECT_EQ(bytesOf(*(created ? created : image)), bytesOf(*image));
      EXPECT_TRUE(expected == S_OK || bytesOf(*image) == before) << type << " on " << format;
      EXPECT_EQ(image->GetFormat(), turnsGrey(type) && format != NoPixelStorage ? L8 : format);
    }
  }
}

TEST(Filter, ImagesWithoutPixelsToChange) {
  for (int type : {0, 6, 10, 16, 19, 23, 24, 27}) {
    const bool greyOnly = type >= QAVMMIFilterMedian;
    const Image locked(new ReadOnlyImage(4, 4, L8));
    EXPECT_EQ(Processor::Filter(*locked, filterType(type), 1, nullptr, 1), E_FAIL) << type;
    for (QAVPixelImageFormat format : {L8, RGB888}) {
      const Image empty = makeImage(0, 3, format);
      reported.clear();
      EXPECT_EQ(Processor::Filter(*empty, filterType(type), 2, record, 1), E_FAIL) << type;
      EXPECT_TRUE(reported.empty());
      // The conversion stays although the filter fails.
      EXPECT_EQ(empty->GetFormat(), turnsGrey(type) ? L8 : format);
    }
    if (greyOnly) continue;
    const Image lockedColour(new ReadOnlyImage(4, 4, RGBA8888));
    EXPECT_EQ(Processor::Filter(*lockedColour, filterType(type), 1, nullptr, 1), E_FAIL) << type;
  }
}

TEST(Antialias, LevelsChooseTheSmoothingFilter) {
  const std::pair<int, QAVMMIFilterType> cases[] = {{0, QAVMMIFilterSmoothBox},   {1, QAVMMIFilterSmoothLight},
                                                    {2, QAVMMIFilterSmoothGauss}, {3, QAVMMIFilterSmoothCentre},
                                                    {4, QAVMMIFilterGauss},       {100, QAVMMIFilterGauss},
                                                    {-1, QAVMMIFilterGauss}};
  std::mt19937 random(5);
  for (const auto& [level, type] : cases) {
    for (QAVPixelImageFormat format : kByteFormats) {
      const Image image = randomImage(21, 6, format, random);
      const auto expected = expectedOf(*image, type, 1).bytes;
      const Image created(Processor::CreateAntialiased(*image, level, nullptr));
      ASSERT_TRUE(created);
      EXPECT_EQ(bytesOf(*created), expected) << level;
      reported.clear();
      EXPECT_EQ(Processor::Antialiase(*image, level, record, 0), S_OK);
      EXPECT_EQ(bytesOf(*image), expected) << level;
      EXPECT_EQ(reported, ramp(6, 1.0f / 6));
    }
    for (QAVPixelImageFormat format : {BitonalRuns, NoPixelStorage, RGBFloat, RGBA16161616}) {
      const Image refused = makeImage(3, 3, format);
      EXPECT_EQ(Processor::Antialiase(*refused, level, nullptr, 1), E_FAIL);
      EXPECT_EQ(Processor::CreateAntialiased(*refused, level, nullptr), nullptr);
    }
  }
}

}  // namespace
}  // namespace qav::test
