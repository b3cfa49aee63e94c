// Reads the first picture of a block-record file:
//   qav_example_block_raster FILE.rip RESULT.png

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>

#include "Image.h"

namespace {

Image readBlockRaster(const char* path) {
  int kind = 0;
  std::int64_t extent[2] = {};
  if (ripicrhd(path, &kind, extent) != 0) return nullptr;
  constexpr std::int64_t most = 20000;  // what the file says may be anything
  if (extent[0] < 1 || extent[1] < 1 || extent[0] > most || extent[1] > most) return nullptr;
  Image image(new QAVPixelImage(static_cast<int>(extent[0]), static_cast<int>(extent[1]), RGB888));
  // Any rectangle can be read; this one is the whole picture.
  const std::int64_t origin[2] = {0, 0};
  return ripicrdt(path, &kind, origin, extent, image->GetPixelsToModify()) == 0 ? std::move(image) : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_block_raster FILE.rip RESULT.png\n"), 2;
  const Image image = readBlockRaster(argv[1]);
  if (!image) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  if (FAILED(image->WriteToFile(argv[2], "PNG"))) return std::fprintf(stderr, "cannot write '%s'\n", argv[2]), 1;
  return 0;
}
