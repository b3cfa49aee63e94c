#include "support/Comparison.h"
#include "support/MemoryPath.h"

#include <wand/MagickWand.h>

#include <string>

namespace qav::bench {
namespace {

MagickWand* picture() {
  static MagickWand* const made = [] {
    MagickWandGenesis();
    SetMagickResourceLimit(ThreadResource, 1);
    MagickWand* wand = NewMagickWand();
    MagickConstituteImage(wand, kWidth, kHeight, "RGB", CharPixel, photograph(kWidth, kHeight, 3).data());
    MagickSetImageCompression(wand, NoCompression);
    MagickSetImageDepth(wand, 8);
    return wand;
  }();
  return made;
}

void write(const MemoryPath& path) { MagickWriteImage(picture(), (std::string("sgi:") + path.name()).c_str()); }

[[maybe_unused]] const bool added[] = {
    add("SGI read, RGB", "ImageMagick",
        [] {
          static const MemoryPath path("magick.rgb");
          static const bool written = (write(path), true);
          static_cast<void>(written);
          MagickWand* wand = NewMagickWand();
          MagickReadImage(wand, (std::string("sgi:") + path.name()).c_str());
          keep(wand);
          DestroyMagickWand(wand);
        }),
    add("SGI write, RGB", "ImageMagick",
        [] {
          static const MemoryPath path("magick-written.rgb");
          write(path);
        }),
};

}  // namespace
}  // namespace qav::bench
