// Makes an SGI image file of a picture, or a PNG file of an SGI image:
//   qav_example_sgi PICTURE RESULT

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>
#include <string_view>

#include "Image.h"

namespace {

bool makePNG(const char* sgi, const char* png) {
  const Image image(ReadRGB(sgi));
  return image && SUCCEEDED(image->WriteToFile(png, "PNG"));
}

bool makeSGI(const char* picture, const char* sgi) {
  const Image image(QAVPixelImage::CreateFromFile(picture, QAVReadOnly, 0));
  return image && WriteRGB(sgi, image.get()) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_sgi PICTURE RESULT\n"), 2;
  const bool isSGI = std::string_view(argv[1]).ends_with(".sgi");
  if (!(isSGI ? makePNG : makeSGI)(argv[1], argv[2]))
    return std::fprintf(stderr, "cannot make '%s' of '%s'\n", argv[2], argv[1]), 1;
  return 0;
}
