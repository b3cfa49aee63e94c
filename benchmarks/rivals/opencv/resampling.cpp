#include "rivals/opencv/Pictures.h"

#include <opencv2/imgproc.hpp>

namespace qav::bench {
namespace {

template <int kChannels>
const cv::Mat& floats() {
  static const cv::Mat mat = [] {
    cv::Mat made;
    sharedMat(kChannels).convertTo(made, CV_32FC(kChannels), 1.0 / 255);
    return made;
  }();
  return mat;
}
constexpr auto rgbaFloats = floats<4>;
constexpr auto rgbFloats = floats<3>;

const cv::Mat& bytes() { return sharedMat(4); }
const cv::Mat& rgb() { return sharedMat(3); }

// Its cubic and Lanczos (8 x 8) do not widen when shrinking: less work than the others do.
std::function<void()> scaling(const cv::Mat& (*source)(), int width, int height, int kind) {
  return [=, out = cv::Mat()]() mutable {
    cv::resize(source(), out, cv::Size(width, height), 0, 0, kind);
    keep(out.data);
  };
}

// Into a new picture each time, as ours does.
std::function<void()> scalingAnew(const cv::Mat& (*source)(), int width, int height, int kind) {
  return [=] {
    cv::Mat out;
    cv::resize(source(), out, cv::Size(width, height), 0, 0, kind);
    keep(out.data);
  };
}

[[maybe_unused]] const bool added[] = {
    add("resize cubic to 640x360", "OpenCV", scaling(bytes, 640, 360, cv::INTER_CUBIC)),
    add("resize cubic to 960x540", "OpenCV", scaling(bytes, 960, 540, cv::INTER_CUBIC)),
    add("resize cubic to 3840x2160", "OpenCV", scaling(bytes, 3840, 2160, cv::INTER_CUBIC)),
    add("resize Lanczos3 to 640x360", "OpenCV", scaling(bytes, 640, 360, cv::INTER_LANCZOS4)),
    add("resize Lanczos3 to 960x540", "OpenCV", scaling(bytes, 960, 540, cv::INTER_LANCZOS4)),
    add("resize Lanczos3 to 3840x2160", "OpenCV", scaling(bytes, 3840, 2160, cv::INTER_LANCZOS4)),
    add("resize RGB cubic to 1280x720", "OpenCV", scaling(rgb, 1280, 720, cv::INTER_CUBIC)),
    add("resize box to 320x180", "OpenCV", scaling(bytes, 320, 180, cv::INTER_AREA)),
    add("resize triangle to 2880x1620", "OpenCV", scaling(bytes, 2880, 1620, cv::INTER_LINEAR)),
    add("resize float cubic to 640x360", "OpenCV", scaling(rgbaFloats, 640, 360, cv::INTER_CUBIC)),
    add("resize float cubic to 960x540", "OpenCV", scaling(rgbaFloats, 960, 540, cv::INTER_CUBIC)),
    add("resize float cubic to 2880x1620", "OpenCV", scaling(rgbaFloats, 2880, 1620, cv::INTER_CUBIC)),
    add("resize float cubic to 2880x1620, anew", "OpenCV", scalingAnew(rgbaFloats, 2880, 1620, cv::INTER_CUBIC)),
    add("resize float RGB cubic to 960x540", "OpenCV", scaling(rgbFloats, 960, 540, cv::INTER_CUBIC)),
    add("resize float Lanczos3 to 640x360", "OpenCV", scaling(rgbaFloats, 640, 360, cv::INTER_LANCZOS4)),
    add("resize float Lanczos3 to 960x540", "OpenCV", scaling(rgbaFloats, 960, 540, cv::INTER_LANCZOS4)),
    add("resize float, equal cubic, to 640x360", "OpenCV", scaling(rgbaFloats, 640, 360, cv::INTER_CUBIC)),
    add("resize float, equal cubic, to 960x540", "OpenCV", scaling(rgbaFloats, 960, 540, cv::INTER_CUBIC)),
    add("resize float, equal cubic, to 1280x720", "OpenCV", scaling(rgbaFloats, 1280, 720, cv::INTER_CUBIC)),
};

}  // namespace
}  // namespace qav::bench
