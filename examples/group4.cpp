// Codes a picture as a bare Group 4 page, and decodes the page to see that nothing is lost:
//   qav_example_group4 PICTURE PAGE.g4

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>
#include <fstream>
#include <vector>

#include "Image.h"

namespace {

using Bytes = std::vector<unsigned char>;

// One bit a pixel, 1 for black, rows without padding.
Bytes bitmapOf(const QAVPixelImage& grey, int width, int height) {
  Bytes bitmap((static_cast<std::size_t>(width) * static_cast<std::size_t>(height) + 7) / 8);
  const unsigned char* const pixels = grey.GetPixelsToRead();
  for (std::size_t i = 0; i < static_cast<std::size_t>(width) * static_cast<std::size_t>(height); ++i) {
    if (pixels[i] < 128) bitmap[i / 8] = static_cast<unsigned char>(bitmap[i / 8] | 0x80 >> i % 8);
  }
  return bitmap;
}

// Empty on failure. Noise takes more room than its bitmap.
Bytes encoded(const Bytes& bitmap, int* size) {
  Bytes coded(4 * bitmap.size() + 1024);
  int capacity = static_cast<int>(coded.size()), length = 0, error = 0;
  if (CCITT_G4_enc(bitmap.data(), size, capacity, coded.data(), length, error) != 0)
    std::fprintf(stderr, "coding ended with error %d\n", error);
  coded.resize(static_cast<std::size_t>(length));
  return coded;
}

bool decodesTo(const Bytes& bitmap, const Bytes& coded, int* size) {
  Bytes decoded(bitmap.size());
  int rows = 0, error = 0;
  return CCITT_G4_dec(coded.data(), static_cast<int>(coded.size()), size, decoded.data(), rows, error) == 0 &&
         rows == size[1] && decoded == bitmap;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_group4 PICTURE PAGE.g4\n"), 2;
  const Image page(QAVPixelImage::CreateFromFile(argv[1], QAVReadWrite, 0));
  if (!page || FAILED(page->ConvertToFormat(L8))) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  int size[2] = {};
  page->GetSize(size[0], size[1]);
  const Bytes bitmap = bitmapOf(*page, size[0], size[1]), coded = encoded(bitmap, size);
  if (coded.empty() || !decodesTo(bitmap, coded, size)) return std::fprintf(stderr, "cannot code the page\n"), 1;
  std::ofstream file(argv[2], std::ios::binary);
  file.write(reinterpret_cast<const char*>(coded.data()), static_cast<std::streamsize>(coded.size()));
  file.close();
  if (!file) return std::fprintf(stderr, "cannot write '%s'\n", argv[2]), 1;
  std::printf("%d x %d pixels: %zu bytes instead of %zu\n", size[0], size[1], coded.size(), bitmap.size());
  return 0;
}
