#include "support/Comparison.h"

#include <libyuv.h>

namespace qav::bench {
namespace {

std::vector<std::uint8_t>& target() {
  static std::vector<std::uint8_t> bytes(std::size_t{kWidth} * kHeight * 4);
  return bytes;
}

const std::uint8_t* source(int channels) { return photograph(kWidth, kHeight, channels).data(); }

[[maybe_unused]] const bool added[] = {
    add("grey of RGBA", "libyuv",
        [] { libyuv::ARGBToJ400(source(4), kWidth * 4, target().data(), kWidth, kWidth, kHeight); }),
    add("grey of RGB", "libyuv",
        [] { libyuv::RGB24ToJ400(source(3), kWidth * 3, target().data(), kWidth, kWidth, kHeight); }),
    add("Sobel from RGBA", "libyuv",
        [] { libyuv::ARGBSobelToPlane(source(4), kWidth * 4, target().data(), kWidth, kWidth, kHeight); }),
    add("mirror RGBA left-right", "libyuv",
        [] { libyuv::ARGBMirror(source(4), kWidth * 4, target().data(), kWidth * 4, kWidth, kHeight); }),
    add("mirror RGBA top-bottom", "libyuv",
        [] { libyuv::ARGBCopy(source(4), kWidth * 4, target().data(), kWidth * 4, kWidth, -kHeight); }),
    add("mirror RGB left-right", "libyuv",
        [] { libyuv::RGB24Mirror(source(3), kWidth * 3, target().data(), kWidth * 3, kWidth, kHeight); }),
};

}  // namespace
}  // namespace qav::bench
