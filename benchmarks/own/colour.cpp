#include "kernels/ChannelExtremes.h"
#include "kernels/GreyConversion.h"
#include "support/Comparison.h"

#include <QAVMMediaImageProcessor.h>

namespace qav::bench {
namespace {

constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

QAVPixelImage& picture(QAVPixelImageFormat format) {
  static QAVPixelImage* const images[] = {photographImage(kWidth, kHeight, L8), photographImage(kWidth, kHeight, LA88),
                                          photographImage(kWidth, kHeight, RGB888),
                                          photographImage(kWidth, kHeight, RGBA8888)};
  return *images[format];
}

void extremes(int channels) {
  std::uint8_t minima[4], maxima[4];
  kernels::channelExtremesKernels().find(photograph(kWidth, kHeight, channels).data(), kPixels, channels, minima,
                                         maxima);
  keep(minima);
}

// Into memory that is there already, as the others do.
void grey(int channels) {
  static std::vector<std::uint8_t> out(kPixels);
  kernels::greyConversionKernels().weighted(photograph(kWidth, kHeight, channels).data(), kPixels, channels,
                                            {2989, 5866, 1145, 10000}, out.data());
  keep(out.data());
}

void mirror(QAVPixelImageFormat format, QAVMMIMirrorType type) {
  QAVMMediaImageProcessor::Mirror(picture(format), type, nullptr, 1);
}

void mask(QAVMMIMaskType type) {
  QAVMMediaImageProcessor::Mask(picture(RGBA8888), picture(RGBA8888), type, nullptr)->Release();
}

[[maybe_unused]] const bool added[] = {
    addOurs("channel extremes L8", 4.5, [] { extremes(1); }),
    addOurs("channel extremes RGBA", 7, [] { extremes(4); }),
    addOurs("grey of RGBA", {{"libyuv", 1}, {"OpenCV", 2}}, [] { grey(4); }),
    addOurs("grey of RGB", {{"OpenCV", 2.3}}, [] { grey(3); }),
    addOurs("mirror RGBA left-right", 0.97, [] { mirror(RGBA8888, QAVMMIMirrorLeftRight); }),
    addOurs("mirror RGBA top-bottom", 0.97, [] { mirror(RGBA8888, QAVMMIMirrorTopBottom); }),
    addOurs("mirror RGBA both", 0.97, [] { mirror(RGBA8888, QAVMMIMirrorBoth); }),
    addOurs("mirror RGB left-right", {{"libyuv", 1.7}, {"OpenCV", 3}}, [] { mirror(RGB888, QAVMMIMirrorLeftRight); }),
    addOurs("mask by luminance", 0, [] { mask(QAVMMIMaskLuminance); }),
    addOurs("mask by alpha", 0, [] { mask(QAVMMIMaskAlpha); }),
};

}  // namespace
}  // namespace qav::bench
