#include "support/Comparison.h"
#include "support/MemoryPath.h"

#include <QAVSGIImageFile.h>

namespace qav::bench {
namespace {

const QAVPixelImage& picture() {
  static const QAVPixelImage& made = *photographImage(kWidth, kHeight, RGB888);
  return made;
}

void write(const MemoryPath& path) { WriteRGB(path.name(), &picture()); }

void read() {
  static const MemoryPath path("ours.rgb");
  static const bool written = (write(path), true);
  static_cast<void>(written);
  QAVPixelImage* const image = ReadRGB(path.name());
  keep(image);
  image->Release();
}

void writeOnly() {
  static const MemoryPath path("ours-written.rgb");
  write(path);
}

[[maybe_unused]] const bool added[] = {
    addOurs("SGI read, RGB", 4.5, read),
    addOurs("SGI write, RGB", 10, writeOnly),
    addOurs("SGI read against one fread", 0.5, read),
    addOurs("SGI write against one fwrite", 0.5, writeOnly),
};

}  // namespace
}  // namespace qav::bench
