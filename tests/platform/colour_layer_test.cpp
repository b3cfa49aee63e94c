#include "support/Test.h"

#include <QAVMMColorTransform.h>
#include <QAVMMPIPixelImageAccess.h>

namespace qav::test {
namespace {

struct ReleaseIterator {
  void operator()(QAVMMPIPixelIterator* iterator) const { iterator->Release(); }
};
using Iterator = std::unique_ptr<QAVMMPIPixelIterator, ReleaseIterator>;

Iterator iteratorOf(const QAVPixelImage& image) { return Iterator(QAVMMPIPixelImageAccess::GetIterator(image)); }

// The column and row that the iterator stands on, in an image whose red channel (or grey) is 10 * row + column.
int placeOf(const QAVMMPIPixelIterator& iterator) {
  QAVMMPIPixelColor colour;
  iterator.GetColor(colour);
  return colour.GetUCHARi(0);
}

Image numberedImage(QAVPixelImageFormat format) {
  const Image grey = makeImage(4, 3, L8);
  for (int i = 0; i < 12; ++i) grey->GetPixelsToModify()[i] = static_cast<unsigned char>(10 * (i / 4) + i % 4);
  return Image(grey->CreateConvertedCopy(format));
}

TEST(PixelIterator, WalksInRasterOrderAndNeverLeaves) {
  for (const QAVPixelImageFormat format : {L8, LA88, RGB888, RGBA8888, RGB161616, RGBA16161616, RGBAFloat}) {
    const Image image = numberedImage(format);
    const Iterator it = iteratorOf(*image);
    ASSERT_TRUE(it && !it->IsEmpty());
    for (int i = 0; i < 14; ++i, it->StepRight()) {
      const int at = std::min(i, 11);
      EXPECT_EQ(placeOf(*it), 10 * (at / 4) + at % 4);
      EXPECT_EQ(it->IsStartOfRow(), at % 4 == 0);
      EXPECT_EQ(it->IsEndOfRow(), at % 4 == 3);
    }
    for (int i = 11; i > -3; --i, it->StepLeft())
      EXPECT_EQ(placeOf(*it), 10 * (std::max(i, 0) / 4) + std::max(i, 0) % 4);
    EXPECT_TRUE(it->GoTo(2, 1));
    for (const auto& outside : {std::pair(4, 0), std::pair(0, 3), std::pair(-1, 0), std::pair(0, INT_MIN)})
      EXPECT_FALSE(it->GoTo(outside.first, outside.second));
    EXPECT_EQ(placeOf(*it), 12);
    EXPECT_TRUE(it->StepDown());
    EXPECT_FALSE(it->StepDown());
    EXPECT_EQ(placeOf(*it), 22);
  }
}

TEST(PixelIterator, ComparesRowsByColour) {
  for (const QAVPixelImageFormat format :
       {L8, LA88, RGB888, RGBA8888, BitonalRuns, RGB161616, RGBA16161616, RGBFloat}) {
    const Image grey = imageOf(3, 3, L8, {0, 255, 0, 0, 255, 0, 0, 255, 255});
    const Image image(grey->CreateConvertedCopy(format));
    const Iterator it = iteratorOf(*image);
    it->GoTo(1, 1);
    EXPECT_EQ(it->CompareRows(0, 1), 0) << format;
    EXPECT_GT(it->CompareRows(2, 1), 0) << format;
    EXPECT_LT(it->CompareRows(3, 0), 0);
    EXPECT_LT(it->CompareRows(0, -1), 0);
    EXPECT_EQ(placeOf(*it), 255) << "comparing does not move";
  }
}

TEST(PixelIterator, EmptyAndPixellessImages) {
  EXPECT_FALSE(iteratorOf(QAVPixelImage(3, 3, NoPixelStorage)));
  const QAVPixelImage empty(0, 3, L8), unfilled(2, 2, L8, nullptr, QAVDeallocatePixelsByImage);
  for (const QAVPixelImage* image : {&empty, &unfilled}) {
    const Iterator it = iteratorOf(*image);
    ASSERT_TRUE(it);
    EXPECT_TRUE(it->IsEmpty());
    EXPECT_LT(it->CompareRows(0, 0), 0);
    it->StepRight();
    it->StepLeft();
    QAVMMPIPixelColor colour;
    it->GetColor(colour);
    EXPECT_FALSE(QAVMMPIPixelImageAccess::GetPixelImageColorAt(*image, 0, 0, colour));
    EXPECT_EQ(colour.GetColorSpec(), nullptr);
  }
}

TEST(PixelColour, ComparesSpecAndChannels) {
  const Image rgb = imageOf(2, 1, RGB888, {1, 2, 3, 1, 2, 4});
  const Image deep(rgb->CreateConvertedCopy(RGB161616));
  QAVMMPIPixelColor first, second, other, none;
  ASSERT_TRUE(QAVMMPIPixelImageAccess::GetPixelImageColorAt(*rgb, 0, 0, first));
  ASSERT_TRUE(QAVMMPIPixelImageAccess::GetPixelImageColorAt(*rgb, 1, 0, second));
  ASSERT_TRUE(QAVMMPIPixelImageAccess::GetPixelImageColorAt(*deep, 0, 0, other));
  EXPECT_TRUE(first.HasSameSpecAndColorThan(first));
  EXPECT_TRUE(first.HasSameSpecThan(second));
  EXPECT_FALSE(first.HasSameSpecAndColorThan(second));
  EXPECT_FALSE(first.HasSameColorWithSameSpecThan(second));
  EXPECT_FALSE(first.HasSameSpecThan(other));
  EXPECT_FALSE(none.HasSameSpecThan(none));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(first.GetUCHARi(i), other.GetUCHARi(i));
  for (const int i : {-1, 3, 4, INT_MAX}) EXPECT_EQ(first.GetUCHARi(i), 0);
  EXPECT_FALSE(QAVMMPIPixelImageAccess::GetPixelImageColorAt(*rgb, 2, 0, first));
  EXPECT_EQ(first.GetUCHARi(2), 3) << "outside the image nothing changes";

  const std::array<float, 4> odd{NAN, -INFINITY, INFINITY, 0.5f};
  const Image floats = makeImage(1, 1, RGBAFloat);
  const QAVMMPIPixelColor colour(floats->getSpec(), odd);
  const int bytes[] = {0, 0, 255, 128};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(colour.GetUCHARi(i), bytes[i]);
}

TEST(ColourSpec, IsTheSameForTheSameFormatAndSpace) {
  for (const QAVPixelImageFormat format : kAllFormats) {
    QAVPixelImage image(1, 1, format);
    QAVMMPIPixelColorSpec* shared = QAVMMPIPixelColorSpec::BuildOrRetrievePixelColorSpecFromPixelImage(image);
    QAVMMPIPixelColorSpec* made = QAVMMPIPixelColorSpec::CreatePixelColorSpec(format, nullptr);
    ASSERT_EQ(shared == nullptr, format == NoPixelStorage);
    ASSERT_EQ(made == nullptr, format == NoPixelStorage);
    EXPECT_EQ(shared, image.getSpec());
    if (!made) continue;
    QAVMMPIColorSpace* space = QAVMMPIColorSpace::CreateColorSpace();
    space->kind = 10;
    QAVMMPIPixelColorSpec* xyz = QAVMMPIPixelColorSpec::CreatePixelColorSpec(format, space);
    space->Release();
    EXPECT_TRUE(made->HasSameSpecThan(shared));
    EXPECT_FALSE(made->HasSameSpecThan(xyz));
    EXPECT_FALSE(made->HasSameSpecThan(nullptr));
    for (QAVMMPIPixelColorSpec* spec : {shared, made, xyz}) spec->Release();
  }
}

TEST(Lab, IsRelativeToD65) {
  QAVMMPIColorSpace* space = QAVMMPIColorSpace::CreateColorSpace();
  const auto lab = [&](double a, double b, double c) {
    const double values[3] = {a, b, c};
    std::array<double, 3> result{};
    EXPECT_EQ(QAVMMColorTransform::DoTransformToLab(space, values, result.data()), S_OK);
    return result;
  };
  struct {
    int kind;
    std::array<double, 3> in, lab;
  } const cases[] = {{0, {1, 1, 1}, {100, 0, 0}},
                     {0, {1, 0, 0}, {53.2408, 80.0925, 67.2032}},  // the usual figures for sRGB red
                     {10, {0.95047, 1.0, 1.08883}, {100, 0, 0}},
                     {10, {0, 0, 0}, {0, 0, 0}}};
  for (const auto& c : cases) {
    space->kind = c.kind;
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(lab(c.in[0], c.in[1], c.in[2])[i], c.lab[i], 1e-3);
  }
  double values[3] = {};
  space->kind = 3;
  EXPECT_EQ(QAVMMColorTransform::DoTransformToLab(space, values, values), E_FAIL);
  EXPECT_EQ(QAVMMColorTransform::DoTransformToLab(nullptr, values, values), E_FAIL);
  space->Release();
}

double difference(const double (&a)[3], const double (&b)[3], DELTA_E_METHOD method, const double* weights = nullptr) {
  double result = -1;
  EXPECT_EQ(QAVMMColorTransform::ComputeDeltaE(a, b, method, result, 3.0, weights), S_OK);
  return result;
}

// The published pairs of CIEDE2000 are beside its vectorised form, in the tests of the comparison.
TEST(DeltaE, MethodsAndWeights) {
  const double grey[3] = {50, 0, 0}, lighter[3] = {53, 0, 0}, colour[3] = {50, 3, 4};
  EXPECT_NEAR(difference(grey, colour, DELTA_E_CIE76), 5.0, 1e-12);
  for (const int method : {0, 1, 2, 3, 4})
    EXPECT_NEAR(difference(colour, colour, static_cast<DELTA_E_METHOD>(method)), 0.0, 1e-9);
  EXPECT_NEAR(difference(grey, lighter, DELTA_E_CIE94), 3.0, 1e-9) << "lightness alone is unweighted";
  const double twice[3] = {2, 1, 1};
  for (const DELTA_E_METHOD method : {DELTA_E_CMC, DELTA_E_CIEDE2000})
    EXPECT_NEAR(difference(grey, lighter, method, twice), difference(grey, lighter, method) / 2, 1e-9);
  double result = 7;
  EXPECT_EQ(QAVMMColorTransform::ComputeDeltaE(grey, colour, static_cast<DELTA_E_METHOD>(5), result, 3.0, nullptr),
            E_FAIL);
  EXPECT_EQ(QAVMMColorTransform::ComputeDeltaE(nullptr, colour, DELTA_E_CIE76, result, 3.0, nullptr), E_FAIL);
  EXPECT_EQ(result, 7);
}

}  // namespace
}  // namespace qav::test
