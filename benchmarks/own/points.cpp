#include "support/Comparison.h"

#include <QAVMMediaImageProcessor.h>

#include <cstring>

namespace qav::bench {
namespace {

QAVPixelImage& picture(QAVPixelImageFormat format) {
  static QAVPixelImage* const images[] = {photographImage(kWidth, kHeight, L8), photographImage(kWidth, kHeight, LA88),
                                          photographImage(kWidth, kHeight, RGB888),
                                          photographImage(kWidth, kHeight, RGBA8888)};
  return *images[format];
}

std::vector<std::uint8_t>& scratch() {
  static std::vector<std::uint8_t> bytes(std::size_t{kWidth} * kHeight * 4, 1);
  return bytes;
}

// A gamma curve is no simple arithmetic, so every library has to look its table up.
void gamma(QAVPixelImageFormat format, int channels) {
  QAVMMediaImageProcessor::Gamma(picture(format), 1.01f, channels, nullptr, 1);
}

[[maybe_unused]] const bool added[] = {
    addOurs("table L8", 12, [] { gamma(L8, QAVMMIChannelLuminance); }),
    addOurs("table RGBA, all channels", 8, [] { gamma(RGBA8888, 30); }),
    addOurs("table RGBA, without alpha", 4.3, [] { gamma(RGBA8888, 14); }),
    addOurs("balance RGB", 9,
            [] { QAVMMediaImageProcessor::Balance(picture(RGB888), 0.01f, -0.01f, 0.02f, nullptr, 1); }),
    addOurs("negative RGB of RGBA", 0.97, [] { QAVMMediaImageProcessor::Negative(picture(RGBA8888), 14, nullptr, 1); }),
    add("limit: in-place complement of 8 MB", "memory",
        [] {
          for (std::uint8_t& byte : scratch()) byte ^= 255;
          keep(scratch().data());
        }),
    add("limit: copy of 8 MB", "memory",
        [] {
          static std::vector<std::uint8_t> target(scratch().size());
          std::memcpy(target.data(), scratch().data(), target.size());
          keep(target.data());
        }),
};

}  // namespace
}  // namespace qav::bench
