// Dithers a picture in every way and puts the results side by side, three in a row:
//   qav_example_dithering PICTURE SHEET.png

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>

#include "Image.h"

namespace {

constexpr int kWidth = 320, kHeight = 240, kGap = 8;
constexpr int kMethods = QAVMMIDitherThreshold + 1;

Image sheetOf(const QAVPixelImage& picture) {
  Image sheet(new QAVPixelImage(3 * kWidth + 2 * kGap, 2 * kHeight + kGap, L8));
  QAVMMediaImageProcessor::Negative(*sheet, QAVMMIChannelLuminance, nullptr, 1);
  for (int method = 0; method < kMethods; ++method) {
    const Image dithered(new QAVPixelImage(picture));
    const int x = method % 3 * (kWidth + kGap), y = method / 3 * (kHeight + kGap);
    const auto type = static_cast<QAVMMIDitherType>(method);
    if (FAILED(QAVMMediaImageProcessor::Dither(*dithered, type, nullptr, 0, 0)) ||
        FAILED(sheet->PasteImage(x, y, dithered.get(), 0)))
      return nullptr;
  }
  return sheet;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_dithering PICTURE SHEET.png\n"), 2;
  const Image picture(QAVPixelImage::CreateFromFile(argv[1], QAVReadOnly, 0));
  if (!picture) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  // Dots must not be scaled, so the picture is, before it is dithered.
  const Image small(picture->CreateResizedCopy(kWidth, kHeight, QAVMMIResampleTriangle));
  const Image sheet = small ? sheetOf(*small) : nullptr;
  // One bit a pixel keeps the file small.
  if (!sheet || FAILED(sheet->ConvertToFormat(BitonalRuns)) || FAILED(sheet->WriteToFile(argv[2], "PNG")))
    return std::fprintf(stderr, "cannot make '%s'\n", argv[2]), 1;
  return 0;
}
