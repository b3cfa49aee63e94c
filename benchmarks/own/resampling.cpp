#include "support/Comparison.h"

#include <QAVMMResamplingKernels.h>
#include <QAVMMResizeEngine.h>

#include <algorithm>
#include <cmath>

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

template <QAVPixelImageFormat kFormat, int kChannels>
QAVPixelImage& floats() {
  static QAVPixelImage& image = *[] {
    auto* const made = new QAVPixelImage(kWidth, kHeight, kFormat);
    const auto& samples = photograph(kWidth, kHeight, kChannels);
    for (std::size_t i = 0; i < samples.size(); ++i)
      made->GetFloatingPixelsToModify()[i] = static_cast<float>(samples[i]) / 255.0f;
    return made;
  }();
  return image;
}
constexpr auto rgbaFloats = floats<RGBAFloat, 4>;
constexpr auto rgbFloats = floats<RGBFloat, 3>;

// The weights of OpenCV's cubic, which stays four positions wide when it shrinks.
template <int kNumerator, int kDenominator>
class OpenCvCubic : public QAVMMGenericFilter {
 public:
  OpenCvCubic() : QAVMMGenericFilter(2.0 * kScale) {}
  double Evaluate(double x) override {
    constexpr double a = -0.75;
    const double d = std::abs(x) / kScale;
    if (d < 1) return ((a + 2) * d - (a + 3)) * d * d + 1;
    return d < 2 ? ((a * d - 5 * a) * d + 8 * a) * d - 4 * a : 0.0;
  }

 private:
  static constexpr double kScale = std::min(1.0, static_cast<double>(kNumerator) / kDenominator);
};

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
    addOurs("resize float cubic to 640x360", 3, scaling<Cubic>(rgbaFloats, 640, 360)),
    addOurs("resize float cubic to 960x540", 3, scaling<Cubic>(rgbaFloats, 960, 540)),
    addOurs("resize float cubic to 2880x1620", 3, scaling<Cubic>(rgbaFloats, 2880, 1620)),
    addOurs("resize float cubic to 2880x1620, anew", 3, scaling<Cubic>(rgbaFloats, 2880, 1620)),
    addOurs("resize float RGB cubic to 960x540", 0, scaling<Cubic>(rgbFloats, 960, 540)),
    addOurs("resize float Lanczos3 to 640x360", 3, scaling<Lanczos>(rgbaFloats, 640, 360)),
    addOurs("resize float Lanczos3 to 960x540", 3, scaling<Lanczos>(rgbaFloats, 960, 540)),
    addOurs("resize float, equal cubic, to 640x360", 3, scaling<OpenCvCubic<1, 3>>(rgbaFloats, 640, 360)),
    addOurs("resize float, equal cubic, to 960x540", 3, scaling<OpenCvCubic<1, 2>>(rgbaFloats, 960, 540)),
    addOurs("resize float, equal cubic, to 1280x720", 3, scaling<OpenCvCubic<2, 3>>(rgbaFloats, 1280, 720)),
};

}  // namespace
}  // namespace qav::bench
