// Says how far two pictures of one size differ to the eye; ends with 1 when a pixel does so noticeably:
//   qav_example_compare FIRST SECOND

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>
#include <memory>

#include "Image.h"

namespace {

constexpr double kNoticeable = 1.0;  // CIEDE2000

Image read(const char* path) {
  Image image(QAVPixelImage::CreateFromFile(path, QAVReadWrite, 0));
  return image && SUCCEEDED(image->ConvertToFormat(RGB888)) ? std::move(image) : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_compare FIRST SECOND\n"), 2;
  const Image first = read(argv[1]), second = read(argv[2]);
  double mean = 0, percentage = 0, deviation = 0, maximum = 0, median = 0, *differences = nullptr;
  int count = 0;
  if (!first || !second ||
      !QAVPixelImageComparator::ImageLabCompare(first.get(), second.get(), "", kNoticeable, 0, mean, count, percentage,
                                                deviation, maximum, median, differences))
    return std::fprintf(stderr, "these are not two pictures of one size\n"), 2;
  const std::unique_ptr<double[]> freed(differences);
  std::printf("%d pixels differ (%.2f%%), by %.2f on average, %.2f at most\n", count, percentage, mean, maximum);
  return count == 0 ? 0 : 1;
}
