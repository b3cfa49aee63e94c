// Cuts the oval in the middle out of a picture, with a soft edge:
//   qav_example_mask PICTURE RESULT.png

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>

#include "Image.h"

namespace {

// White where the picture is to be seen, black where not, grey between.
Image ovalMask(int width, int height) {
  Image mask(new QAVPixelImage(width, height, RGBA8888));
  QAVMMIHelperRGBA helper(*mask);
  helper.Clear(0xFF000000u);
  helper.Ellipse(width / 2, height / 2, width * 2 / 5, height * 2 / 5, 0xFFFFFFFFu, 1);
  QAVMMediaImageProcessor::Filter(*mask, QAVMMIFilterSmoothGauss, 8, nullptr, 0);
  return mask;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_mask PICTURE RESULT.png\n"), 2;
  const Image image(QAVPixelImage::CreateFromFile(argv[1], QAVReadWrite, 0));
  if (!image || FAILED(image->ConvertToFormat(RGBA8888))) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  int width = 0, height = 0;
  image->GetSize(width, height);
  const Image mask = ovalMask(width, height);
  const Image cutOut(QAVMMediaImageProcessor::Mask(*image, *mask, QAVMMIMaskLuminance, nullptr));
  if (!cutOut || FAILED(cutOut->WriteToFile(argv[2], "PNG")))
    return std::fprintf(stderr, "cannot make '%s'\n", argv[2]), 1;
  return 0;
}
