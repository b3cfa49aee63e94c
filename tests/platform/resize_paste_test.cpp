#include "platform/AnyImage.h"
#include "support/Test.h"

namespace qav::test {
namespace {

constexpr QAVMMIResampleType kKinds[] = {QAVMMIResampleNearest, QAVMMIResampleTriangle, QAVMMIResampleCatmullRom,
                                         QAVMMIResampleMitchell};

TEST(Resize, ConstantImagesStayExactlyConstant) {
  std::mt19937 random(1);
  for (const QAVPixelImageFormat format : kAllFormats) {
    if (pixelLayoutOf(format).channels == 0) continue;
    for (const QAVMMIResampleType kind : kKinds)
      for (const auto& to : {std::pair(1, 1), std::pair(200, 3), std::pair(7, 90), std::pair(13, 9), std::pair(4, 4)}) {
        const Image source = makeImage(13, 9, format);
        const auto pixelSize = static_cast<std::size_t>(source->GetBytesPerPixel());
        std::vector<std::uint8_t> pixel(pixelSize);
        for (std::uint8_t& byte : pixel) byte = static_cast<std::uint8_t>(random() % 128);  // finite as float, too
        for (std::size_t i = 0; i < 13 * 9; ++i)
          std::memcpy(pixelsToModify(*source) + i * pixelSize, pixel.data(), pixelSize);
        const Image result(source->CreateResizedCopy(to.first, to.second, kind));
        ASSERT_TRUE(result);
        ASSERT_EQ(result->GetFormat(), format);
        const std::vector<std::uint8_t> out = memoryOf(*result);
        ASSERT_EQ(out.size(), static_cast<std::size_t>(to.first) * static_cast<std::size_t>(to.second) * pixelSize);
        for (std::size_t i = 0; i < out.size(); ++i) ASSERT_EQ(out[i], pixel[i % pixelSize]) << format << " " << kind;
      }
  }
}

// Weight of a kernel at a distance, from the textbook forms.
double weight(QAVMMIResampleType kind, double x) {
  x = std::fabs(x);
  if (kind == QAVMMIResampleTriangle) return std::max(0.0, 1 - x);
  if (kind == QAVMMIResampleCatmullRom)
    return x < 1 ? 1.5 * x * x * x - 2.5 * x * x + 1 : x < 2 ? -0.5 * x * x * x + 2.5 * x * x - 4 * x + 2 : 0;
  return x < 1   ? (7 * x * x * x - 12 * x * x + 16.0 / 3) / 6
         : x < 2 ? (-7.0 / 3 * x * x * x + 12 * x * x - 20 * x + 32.0 / 3) / 6
                 : 0;
}

TEST(Resize, FollowsTheKernelsWithRepeatedEdges) {
  std::mt19937 random(2);
  for (const QAVMMIResampleType kind : kKinds)
    for (const auto& [from, to] :
         {std::pair(10, 10), std::pair(10, 20), std::pair(30, 11), std::pair(3, 50), std::pair(57, 2), std::pair(1, 4)})
      for (const bool vertical : {false, true}) {
        const Image source = randomImage(vertical ? 1 : from, vertical ? from : 1, L8, random);
        const Image result(source->CreateResizedCopy(vertical ? 1 : to, vertical ? to : 1, kind));
        const std::vector<std::uint8_t> in = bytesOf(*source), out = bytesOf(*result);
        const double step = static_cast<double>(from) / to, stretch = std::max(1.0, step);
        for (int i = 0; i < to; ++i) {
          const double centre = (i + 0.5) * step - 0.5;
          double sum = 0, total = 0;
          for (int j = -200; j < 260; ++j) {
            const double w = weight(kind, (j - centre) / stretch);
            sum += w * in[static_cast<std::size_t>(std::clamp(j, 0, from - 1))];
            total += w;
          }
          int nearest = 0;  // the input pixel whose square holds the centre of the output pixel
          while ((nearest + 1) * 2 * to <= (2 * i + 1) * from) ++nearest;
          const double expected = kind == QAVMMIResampleNearest ? in[static_cast<std::size_t>(nearest)]
                                                                : std::clamp(sum / total, 0.0, 255.0);
          ASSERT_NEAR(out[static_cast<std::size_t>(i)], expected, 0.5 + 1e-9) << kind << " " << from << "->" << to;
        }
      }
}

TEST(Resize, BilevelPicksTheNearestPixel) {
  std::mt19937 random(3);
  Image source = randomImage(37, 21, L8, random, Texture::Extremes);
  const Image expected(source->CreateResizedCopy(90, 8, QAVMMIResampleNearest));
  ASSERT_EQ(source->ConvertToFormat(BitonalRuns), S_OK);
  const Image result(source->CreateResizedCopy(90, 8, QAVMMIResampleMitchell));
  ASSERT_EQ(result->GetFormat(), BitonalRuns);
  ASSERT_EQ(result->ConvertToFormat(L8), S_OK);
  EXPECT_EQ(bytesOf(*result), bytesOf(*expected));
}

TEST(Resize, RefusesWhatCannotBe) {
  QAVPixelImage image(4, 4, RGB888), empty(0, 4, RGB888), none(4, 4, NoPixelStorage);
  for (const auto& size : {std::pair(0, 0), std::pair(0, 5), std::pair(5, -1), std::pair(INT_MIN, 1)})
    EXPECT_EQ(image.CreateResizedCopy(size.first, size.second, QAVMMIResampleMitchell), nullptr);
  for (const int kind : {-1, 4})
    EXPECT_EQ(image.CreateResizedCopy(2, 2, static_cast<QAVMMIResampleType>(kind)), nullptr);
  EXPECT_EQ(empty.CreateResizedCopy(2, 2, QAVMMIResampleMitchell), nullptr);
  EXPECT_EQ(none.CreateResizedCopy(2, 2, QAVMMIResampleNearest), nullptr);
}

TEST(Paste, CopiesWhatFallsInsideAtEveryOffset) {
  std::mt19937 random(4);
  std::vector<int> offsets{INT_MIN, INT_MIN + 1, INT_MAX - 4, INT_MAX};
  for (int offset = -7; offset <= 11; ++offset) offsets.push_back(offset);
  const Image start = randomImage(10, 6, L8, random, Texture::Extremes);
  const Image piece = randomImage(5, 7, L8, random, Texture::Extremes);
  for (const QAVPixelImageFormat format : kAllFormats) {
    if (format == NoPixelStorage) continue;
    for (const int x : offsets)
      for (const int y : offsets) {
        std::vector<std::uint8_t> expected = bytesOf(*start);
        for (long long row = 0; row < 6; ++row)
          for (long long column = 0; column < 10; ++column)
            if (column >= x && column < x + 5LL && row >= y && row < y + 7LL)
              expected[static_cast<std::size_t>(row * 10 + column)] =
                  bytesOf(*piece)[static_cast<std::size_t>((row - y) * 5 + column - x)];
        const Image canvas(start->CreateConvertedCopy(format));  // black and white survive every format
        ASSERT_EQ(canvas->PasteImage(x, y, piece.get(), 0), S_OK);
        ASSERT_EQ(canvas->GetFormat(), format);
        ASSERT_EQ(canvas->ConvertToFormat(L8), S_OK);
        ASSERT_EQ(bytesOf(*canvas), expected) << format << " at " << x << "," << y;
      }
  }
}

TEST(Paste, IntoItselfReadsThePixelsAsTheyWere) {
  QAVPixelImage image(2, 3, L8);
  for (unsigned char i = 0; i < 6; ++i) image.GetPixelsToModify()[i] = i;
  QAVPixelImage view(2, 3, L8, image.GetPixelsToModify(), QAVDeallocatePixelsByCaller);
  EXPECT_EQ(image.PasteImage(0, 1, &image, 0), S_OK);
  EXPECT_EQ(bytesOf(image), (std::vector<std::uint8_t>{0, 1, 0, 1, 2, 3}));
  EXPECT_EQ(image.PasteImage(1, 1, &view, 0), S_OK);
  EXPECT_EQ(bytesOf(image), (std::vector<std::uint8_t>{0, 1, 0, 0, 2, 0}));
}

TEST(Paste, RefusesNullUnchangeableAndPixelless) {
  QAVPixelImage image(2, 2, L8), none(2, 2, NoPixelStorage);
  ReadOnlyImage fixed(2, 2, L8);
  EXPECT_EQ(image.PasteImage(0, 0, nullptr, 0), E_FAIL);
  EXPECT_EQ(image.PasteImage(0, 0, &none, 0), E_FAIL);
  EXPECT_EQ(none.PasteImage(0, 0, &image, 0), E_FAIL);
  EXPECT_EQ(fixed.PasteImage(0, 0, &image, 0), E_FAIL);
}

}  // namespace
}  // namespace qav::test
