#include "support/Comparison.h"

#include <allheaders.h>

namespace qav::bench {
namespace {

PIX* picture() {
  PIX* const pix = pixCreate(kWidth, kHeight, 8);
  const std::uint8_t* bytes = photograph(kWidth, kHeight, 1).data();
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) pixSetPixel(pix, x, y, *bytes++);
  return pix;
}

void dither() {
  static PIX* const source = picture();
  PIX* result = pixDitherToBinary(source);
  keep(result);
  pixDestroy(&result);
}

[[maybe_unused]] const bool added[] = {add("dither 0, Floyd-Steinberg of the libraries", "Leptonica", &dither)};

}  // namespace
}  // namespace qav::bench
