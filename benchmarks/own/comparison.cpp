#include "support/Comparison.h"

#include <QAVMMICropping.h>
#include <QAVPixelImageComparator.h>

#include <memory>

namespace qav::bench {
namespace {

struct Pair {
  QAVPixelImage *first, *second;
};

// The photograph and a copy in which every `apart`-th pixel is another colour.
Pair pairDiffering(int apart) {
  Pair pair{photographImage(kWidth, kHeight, RGB888), photographImage(kWidth, kHeight, RGB888)};
  unsigned char* bytes = pair.second->GetPixelsToModify();
  for (int i = 0; i < kWidth * kHeight; i += apart)
    for (int k = 0; k < 3; ++k) bytes[3 * i + k] = static_cast<unsigned char>(bytes[3 * i + k] + 3 + (i + k) % 5);
  return pair;
}

void compare(const Pair& pair) {
  double mean, percentage, deviation, maximum, median;
  int count;
  double* differences = nullptr;
  QAVPixelImageComparator::ImageLabCompare(pair.first, pair.second, "", 1.0, 3, mean, count, percentage, deviation,
                                           maximum, median, differences);
  keep(differences);
  delete[] differences;
}

Pair floatPair() {
  const Pair pair = pairDiffering(1);
  pair.first->ConvertToFormat(RGBFloat);
  pair.second->ConvertToFormat(RGBFloat);
  return pair;
}

void compareFloat(const Pair& pair) {
  double mean, percentage, deviation, maximum, median;
  int count;
  double* differences = nullptr;
  QAVPixelImageComparator::ImageHDRCompare(pair.first, pair.second, "/nowhere/", 0.01, 3, mean, count, percentage,
                                           deviation, maximum, median, differences);
  keep(differences);
  delete[] differences;
}

// A scan of 12 megapixels with a border of 150 pixels.
QAVPixelImage* scan() {
  constexpr int kScanWidth = 4000, kScanHeight = 3000, kBorder = 150;
  auto* image = new QAVPixelImage(kScanWidth, kScanHeight, RGB888);
  unsigned char* bytes = image->GetPixelsToModify();
  for (int y = kBorder; y < kScanHeight - kBorder; ++y)
    for (int x = kBorder * 3; x < (kScanWidth - kBorder) * 3; ++x)
      bytes[y * kScanWidth * 3 + x] = static_cast<unsigned char>(x + y);
  return image;
}

[[maybe_unused]] const bool added[] = {
    addOurs("Lab comparison, all pixels differ", 8,
            [] {
              static const Pair pair = pairDiffering(1);
              compare(pair);
            }),
    addOurs("Lab comparison, 1% differ", 20,
            [] {
              static const Pair pair = pairDiffering(100);
              compare(pair);
            }),
    addOurs("HDR comparison, RGBFloat", 0,
            [] {
              static const Pair pair = floatPair();
              compareFloat(pair);
            }),
    addOurs("crop a 12-megapixel scan", 0,
            [] {
              static QAVPixelImage* const image = scan();
              QAVMMICropping cropping(*image);
              QAVMMPIPixelColor trim;
              int area[4];
              cropping.EvalTrimmingColorOnCornersStrategy(trim);
              cropping.ComputeCroppingAreaFromTrimmingColor(trim, area[0], area[1], area[2], area[3]);
              keep(area);
            }),
};

}  // namespace
}  // namespace qav::bench
