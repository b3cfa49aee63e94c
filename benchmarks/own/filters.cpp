#include "support/Comparison.h"
#include "support/FilterKernels.h"

#include <QAVMMediaImageProcessor.h>

namespace qav::bench {
namespace {

// Each piece of work filters a picture of its own, which is the photograph in the first call. Its result is filtered
// again in the next: the time of these filters does not depend on what they see.
std::function<void()> filtering(QAVMMIFilterType type, QAVPixelImageFormat format) {
  return [=, image = static_cast<QAVPixelImage*>(nullptr)]() mutable {
    if (!image) image = photographImage(kWidth, kHeight, format);
    QAVMMediaImageProcessor::Filter(*image, type, 1, nullptr, 1);
  };
}

// The time of these depends on the picture, so they get the photograph anew each time.
QAVPixelImage& anew(QAVPixelImageFormat format) {
  static QAVPixelImage* const images[] = {photographImage(kWidth, kHeight, RGB888),
                                          photographImage(kWidth, kHeight, RGBA8888)};
  return *images[format == RGBA8888];
}

void takePhotograph(QAVPixelImageFormat format, bool opaque) {
  const int channels = format == RGBA8888 ? 4 : 3;
  const auto& bytes = photograph(kWidth, kHeight, channels);
  unsigned char* const pixels = anew(format).GetPixelsToModify();
  std::copy(bytes.begin(), bytes.end(), pixels);
  for (std::size_t i = 3; opaque && i < bytes.size(); i += 4) pixels[i] = 255;
}

bool addConvolution(const char* operation, double target, int size, std::vector<float> (*weights)(int),
                    bool opaque = false) {
  return addOurs(
      operation, target, [=] { takePhotograph(RGBA8888, opaque); },
      [=, kernel = weights(size)] {
        QAVMMediaImageProcessor::LinearConvolveMatrix(anew(RGBA8888), size, kernel.data());
      });
}

std::function<void()> convolving(int size, std::vector<float> (*weights)(int)) {
  return [=, kernel = weights(size), image = static_cast<QAVPixelImage*>(nullptr)]() mutable {
    if (!image) image = photographImage(kWidth, kHeight, RGBA8888);
    QAVMMediaImageProcessor::LinearConvolveMatrix(*image, size, kernel.data());
  };
}

// Converts the photograph to grey and filters that, as the operation does with pictures of colours.
void sobelFromColours() {
  auto* const pixels = const_cast<std::uint8_t*>(photograph(kWidth, kHeight, 4).data());
  QAVPixelImage image(kWidth, kHeight, RGBA8888, pixels, QAVDeallocatePixelsByCaller);
  QAVMMediaImageProcessor::Filter(image, QAVMMIFilterSobel, 1, nullptr, 1);
}

[[maybe_unused]] const bool added[] = {
    addConvolution("kernel 3x3 of floats", 3, 3, &unevenWeights),
    addConvolution("kernel 7x7 of floats", 5, 7, &unevenWeights),
    addConvolution("kernel 7x7 of floats, opaque", 5, 7, &unevenWeights, true),
    addConvolution("kernel 7x7 of floats, bell", 5, 7, &bellWeights),
    addConvolution("kernel 7x7 of floats, box", 0, 7, &equalWeights),
    addOurs("kernel 3x3 of whole weights", 6, convolving(3, &wholeWeights)),
    addOurs("kernel 7x7 of whole weights", 6, convolving(7, &wholeWeights)),
    addOurs("box RGBA", 4, filtering(QAVMMIFilterSmoothBox, RGBA8888)),
    addOurs("box L8", 4.5, filtering(QAVMMIFilterSmoothBox, L8)),
    addOurs("light RGBA", 4, filtering(QAVMMIFilterSmoothLight, RGBA8888)),
    addOurs("light L8", 4.5, filtering(QAVMMIFilterSmoothLight, L8)),
    addOurs("Gauss RGBA", 4, filtering(QAVMMIFilterSmoothGauss, RGBA8888)),
    addOurs("Gauss L8", 4.5, filtering(QAVMMIFilterSmoothGauss, L8)),
    addOurs("centre RGBA", 4, filtering(QAVMMIFilterSmoothCentre, RGBA8888)),
    addOurs("centre L8", 4.5, filtering(QAVMMIFilterSmoothCentre, L8)),
    addOurs("sharpen light RGBA", 5.5, filtering(QAVMMIFilterSharpenLight, RGBA8888)),
    addOurs("sharpen medium RGBA", 5.5, filtering(QAVMMIFilterSharpenMedium, RGBA8888)),
    addOurs("sharpen RGBA", 5.5, filtering(QAVMMIFilterSharpen, RGBA8888)),
    addOurs("sharpen cross RGBA", 5.5, filtering(QAVMMIFilterSharpenCross, RGBA8888)),
    addOurs("sharpen strong RGBA", 5.5, filtering(QAVMMIFilterSharpenStrong, RGBA8888)),
    addOurs("Sobel L8", 6.5, filtering(QAVMMIFilterSobel, L8)),
    addOurs("Sobel from RGBA", 2.3, &sobelFromColours),
    addOurs("Prewitt L8", 0, filtering(QAVMMIFilterPrewitt, L8)),
    addOurs("isotropic L8", 0, filtering(QAVMMIFilterIsotropic, L8)),
    addOurs("Prewitt compass L8", 0, filtering(QAVMMIFilterPrewittCompass, L8)),
    addOurs("Kirsch L8", 0, filtering(QAVMMIFilterKirsch, L8)),
    addOurs("Roberts L8", 0, filtering(QAVMMIFilterRoberts, L8)),
    addOurs("Laplace L8", 5, filtering(QAVMMIFilterLaplace, L8)),
    addOurs("Sobel rows L8", 0, filtering(QAVMMIFilterSobelHorizontal, L8)),
    addOurs("median L8", 3, filtering(QAVMMIFilterMedian, L8)),
    addOurs(
        "median RGB by key", 80, [] { takePhotograph(RGB888, false); },
        [] { QAVMMediaImageProcessor::Filter(anew(RGB888), QAVMMIFilterMedian, 1, nullptr, 1); }),
    addOurs("minimum L8", 2.5, filtering(QAVMMIFilterMinimum, L8)),
    addOurs("maximum L8", 2.5, filtering(QAVMMIFilterMaximum, L8)),
    addOurs("opening L8", 2.7, filtering(QAVMMIFilterOpening, L8)),
    addOurs("closing L8", 2.7, filtering(QAVMMIFilterClosing, L8)),
};

}  // namespace
}  // namespace qav::bench
