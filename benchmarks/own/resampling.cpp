#include "support/Comparison.h"

#include <QAVMMResamplingKernels.h>
#include <QAVMMResizeEngine.h>

namespace qav::bench {
namespace {

template <class Kernel>
std::function<void()> scaling(QAVPixelImage& (*source)(), unsigned width, unsigned height) {
  return [=] {
    static Kernel kernel;
    QAVPixelImage* const result = QAVMMResizeEngine(&kernel).scale(&source(), width, height);
    keep(result->GetPixelsToRead());
    result->Release();
  };
}

QAVPixelImage& bytes() {
  static QAVPixelImage& image = *photographImage(kWidth, kHeight, RGBA8888);
  return image;
}

QAVPixelImage& rgb() {
  static QAVPixelImage& image = *photographImage(kWidth, kHeight, RGB888);
  return image;
}

QAVPixelImage& floats() {
  static QAVPixelImage& image = *[] {
    auto* const made = new QAVPixelImage(kWidth, kHeight, RGBAFloat);
    const auto& samples = photograph(kWidth, kHeight, 4);
    for (std::size_t i = 0; i < samples.size(); ++i)
      made->GetFloatingPixelsToModify()[i] = static_cast<float>(samples[i]) / 255.0f;
    return made;
  }();
  return image;
}

using Cubic = QAVMMCatmullRomFilter;
using Lanczos = QAVMMLanczos3Filter;

[[maybe_unused]] const bool added[] = {
    addOurs("resize cubic to 640x360", 2, scaling<Cubic>(bytes, 640, 360)),
    addOurs("resize cubic to 960x540", 3, scaling<Cubic>(bytes, 960, 540)),
    addOurs("resize cubic to 3840x2160", 2, scaling<Cubic>(bytes, 3840, 2160)),
    addOurs("resize Lanczos3 to 640x360", 1.6, scaling<Lanczos>(bytes, 640, 360)),
    addOurs("resize Lanczos3 to 960x540", 1.6, scaling<Lanczos>(bytes, 960, 540)),
    addOurs("resize Lanczos3 to 3840x2160", 1.4, scaling<Lanczos>(bytes, 3840, 2160)),
    addOurs("resize RGB cubic to 1280x720", 0, scaling<Cubic>(rgb, 1280, 720)),
    addOurs("resize box to 320x180", 0, scaling<QAVMMBoxFilter>(bytes, 320, 180)),
    addOurs("resize triangle to 2880x1620", 0, scaling<QAVMMTriangleFilter>(bytes, 2880, 1620)),
    addOurs("resize float cubic to 640x360", 3, scaling<Cubic>(floats, 640, 360)),
    addOurs("resize float cubic to 960x540", 3, scaling<Cubic>(floats, 960, 540)),
    addOurs("resize float cubic to 2880x1620", 3, scaling<Cubic>(floats, 2880, 1620)),
    addOurs("resize float cubic to 2880x1620, anew", 3, scaling<Cubic>(floats, 2880, 1620)),
};

}  // namespace
}  // namespace qav::bench
