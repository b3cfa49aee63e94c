#include "support/Comparison.h"

#include <wand/MagickWand.h>

namespace qav::bench {
namespace {

MagickWand* picture() {
  MagickWandGenesis();
  MagickSetResourceLimit(ThreadResource, 1);
  MagickWand* const wand = NewMagickWand();
  MagickConstituteImage(wand, kWidth, kHeight, "I", CharPixel, photograph(kWidth, kHeight, 1).data());
  return wand;
}

// Black and white are the two colours that it may use, so that it has nothing to choose.
MagickWand* blackAndWhite() {
  MagickWandGenesis();
  const unsigned char two[2] = {0, 255};
  MagickWand* const wand = NewMagickWand();
  MagickConstituteImage(wand, 2, 1, "I", CharPixel, two);
  return wand;
}

void dither() {
  static MagickWand* const source = picture();
  static MagickWand* const colours = blackAndWhite();
  MagickWand* const copy = CloneMagickWand(source);
  MagickRemapImage(copy, colours, FloydSteinbergDitherMethod);
  keep(copy);
  DestroyMagickWand(copy);
}

[[maybe_unused]] const bool added[] = {add("dither 0, Floyd-Steinberg of the libraries", "ImageMagick", &dither)};

}  // namespace
}  // namespace qav::bench
