#include "support/Comparison.h"

#include <QAVMMediaImageProcessor.h>

#include <cstring>

namespace qav::bench {
namespace {

// Dithering is in place, so every call begins with a new copy of the picture; its time counts.
void dither(int type) {
  static QAVPixelImage* const image = photographImage(kWidth, kHeight, L8);
  const auto& bytes = photograph(kWidth, kHeight, 1);
  std::memcpy(image->GetPixelsToModify(), bytes.data(), bytes.size());
  QAVMMediaImageProcessor::Dither(*image, static_cast<QAVMMIDitherType>(type), nullptr, 0, 0);
}

void threshold() {
  static QAVPixelImage* const image = photographImage(kWidth, kHeight, L8);
  QAVMMediaImageProcessor::Dither(*image, QAVMMIDitherThreshold, nullptr, 0, 0);
}

[[maybe_unused]] const bool added[] = {
    addOurs("dither 0, Floyd-Steinberg of the libraries", 18, [] { dither(0); }),
    addOurs("dither 0, plain loop", 18, [] { dither(0); }),
    addOurs("dither 1, plain loop", 12, [] { dither(1); }),
    addOurs("dither 2, plain loop", 12, [] { dither(2); }),
    addOurs("dither 3, plain loop", 12, [] { dither(3); }),
    addOurs("dither 4, plain loop", 1.3, [] { dither(4); }),
    addOurs("dither 5, threshold", 1.7, &threshold),
};

}  // namespace
}  // namespace qav::bench
