// Makes a picture from pixels in memory, posterises one channel and writes it:
//   qav_example_memory PICTURE.png

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>

#include "Image.h"

namespace {

constexpr int kSide = 240;

// Red grows to the right, green downwards; rows follow one another without padding.
Image gradient() {
  Image image(new QAVPixelImage(kSide, kSide, RGB888));
  unsigned char* pixel = image->GetPixelsToModify();
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x, pixel += 3) {
      pixel[0] = static_cast<unsigned char>(x);
      pixel[1] = static_cast<unsigned char>(y);
      pixel[2] = 128;
    }
  }
  return image;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return std::fprintf(stderr, "usage: qav_example_memory PICTURE.png\n"), 2;
  const Image image = gradient();
  // With the last argument 0 this would only say whether it can be done.
  HRESULT status = QAVMMediaImageProcessor::Posterize(*image, 8, QAVMMIChannelRed, nullptr, 1);
  if (SUCCEEDED(status)) status = image->WriteToFile(argv[1], "PNG");
  if (FAILED(status)) return std::fprintf(stderr, "cannot make '%s'\n", argv[1]), 1;
  return 0;
}
