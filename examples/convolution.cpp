// Embosses a picture with a kernel of its own:
//   qav_example_convolution PICTURE RESULT.png

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>

#include "Image.h"

namespace {

// Light from below on the right. The result is divided by the sum of the weights, here 1.
constexpr float kEmboss[] = {-2, -1, 0,  //
                             -1, 1,  1,  //
                             0,  1,  2};

HRESULT embossed(QAVPixelImage& image) {
  // Kernels run over four channels.
  HRESULT status = image.ConvertToFormat(RGBA8888);
  if (SUCCEEDED(status)) status = QAVMMediaImageProcessor::LinearConvolveMatrix(image, 3, kEmboss);
  // Beyond the edges all is transparent, and alpha was run through the kernel too: do without it.
  return SUCCEEDED(status) ? image.ConvertToFormat(RGB888) : status;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_convolution PICTURE RESULT.png\n"), 2;
  const Image image(QAVPixelImage::CreateFromFile(argv[1], QAVReadWrite, 0));
  if (!image) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  if (FAILED(embossed(*image)) || FAILED(image->WriteToFile(argv[2], "PNG")))
    return std::fprintf(stderr, "cannot make '%s'\n", argv[2]), 1;
  return 0;
}
