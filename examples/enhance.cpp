// Opens a picture, lightens and sharpens it, halves its size and writes it:
//   qav_example_enhance PICTURE RESULT.png

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>

#include "Image.h"

namespace {

constexpr int kColour = QAVMMIChannelRed | QAVMMIChannelGreen | QAVMMIChannelBlue;

Image halved(QAVPixelImage& image) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  QAVMMLanczos3Filter kernel;
  const auto half = [](int size) { return static_cast<unsigned>((size + 1) / 2); };
  return Image(QAVMMResizeEngine(&kernel).scale(&image, half(width), half(height)));
}

Image enhanced(QAVPixelImage& image) {
  if (FAILED(image.ConvertToFormat(RGB888))) return nullptr;
  if (FAILED(QAVMMediaImageProcessor::AdjustColor(image, 0.05f, 0.2f, 1.3f, kColour, nullptr, 1))) return nullptr;
  if (FAILED(QAVMMediaImageProcessor::Filter(image, QAVMMIFilterSharpenMedium, 1, nullptr, 0))) return nullptr;
  return halved(image);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_enhance PICTURE RESULT.png\n"), 2;
  const Image image(QAVPixelImage::CreateFromFile(argv[1], QAVReadWrite, 0));
  if (!image) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  const Image result = enhanced(*image);
  if (!result || FAILED(result->WriteToFile(argv[2], "PNG")))
    return std::fprintf(stderr, "cannot make '%s'\n", argv[2]), 1;
  return 0;
}
