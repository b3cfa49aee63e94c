// Tones a picture like an old print, by a matrix that mixes its channels:
//   qav_example_colour_matrix PICTURE RESULT.png

#include <QAVMMediaRasterProcessor.h>

#include <algorithm>
#include <cstdio>

#include "Image.h"

namespace {

// A row for each of red, green, blue and alpha; the fifth column is added to all of them, here some light.
constexpr double kOldPrint[] = {0.393, 0.769, 0.189, 0, 0.02,  //
                                0.349, 0.686, 0.168, 0, 0.01,  //
                                0.272, 0.534, 0.131, 0, 0,     //
                                0,     0,     0,     1, 0,     //
                                0,     0,     0,     0, 1};

void transform(QAVPixelImage& image, const QAV5X5ColorMatrix& matrix) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  QAVRawColldouble in, out;
  for (int i = 0; i < 5; ++i) in.Append(1), out.Append(0);
  unsigned char* pixel = image.GetPixelsToModify();
  for (int i = 0; i < width * height; ++i, pixel += 4) {
    // Positions in a collection count from 1; the fifth value stays 1.
    for (int c = 0; c < 4; ++c) in[c + 1] = pixel[c] / 255.0;
    matrix.MatMul(in, out);
    for (int c = 0; c < 4; ++c) pixel[c] = static_cast<unsigned char>(std::clamp(out[c + 1], 0.0, 1.0) * 255 + 0.5);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_colour_matrix PICTURE RESULT.png\n"), 2;
  const Image image(QAVPixelImage::CreateFromFile(argv[1], QAVReadWrite, 0));
  if (!image || FAILED(image->ConvertToFormat(RGBA8888))) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  QAVRawColldouble elements;
  for (const double element : kOldPrint) elements.Append(element);
  QAV5X5ColorMatrix matrix;
  matrix.Initialize(elements);
  transform(*image, matrix);
  if (FAILED(image->WriteToFile(argv[2], "PNG"))) return std::fprintf(stderr, "cannot make '%s'\n", argv[2]), 1;
  return 0;
}
