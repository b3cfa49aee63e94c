// Gives a flat picture its full range: every channel from its own extremes to 0 and 255.
//   qav_example_stretch PICTURE RESULT.png

#include <QAVMMediaRasterProcessor.h>

#include <algorithm>
#include <cstdio>

#include "Image.h"

namespace {

void printRanges(const char* when, const QAVPixelImage& image) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  constexpr const char* names[] = {"red", "green", "blue"};
  const unsigned char* const pixels = image.GetPixelsToRead();
  std::printf("%-7s", when);
  for (int channel = 0; channel < 3; ++channel) {
    int low = 255, high = 0;
    for (int i = 0; i < width * height; ++i) {
      low = std::min<int>(low, pixels[3 * i + channel]);
      high = std::max<int>(high, pixels[3 * i + channel]);
    }
    std::printf("  %s %d..%d", names[channel], low, high);
  }
  std::puts("");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_stretch PICTURE RESULT.png\n"), 2;
  const Image image(QAVPixelImage::CreateFromFile(argv[1], QAVReadWrite, 0));
  if (!image || FAILED(image->ConvertToFormat(RGB888))) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  printRanges("before", *image);
  const int colour = QAVMMIChannelRed | QAVMMIChannelGreen | QAVMMIChannelBlue;
  HRESULT status = QAVMMediaImageProcessor::StretchHistogram(*image, colour, nullptr, 1);
  if (SUCCEEDED(status)) status = image->WriteToFile(argv[2], "PNG");
  if (FAILED(status)) return std::fprintf(stderr, "cannot make '%s'\n", argv[2]), 1;
  printRanges("after", *image);
  return 0;
}
