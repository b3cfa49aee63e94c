#include "rivals/opencv/Pictures.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace qav::bench {
namespace {

void extremes(int channels) {
  static std::vector<cv::Mat> planes(4);
  cv::split(sharedMat(channels), planes);
  for (int k = 0; k < channels; ++k) {
    double low, high;
    cv::minMaxIdx(planes[static_cast<std::size_t>(k)], &low, &high);
    keep(&low);
  }
}

void extremesOfOne() {
  double low, high;
  cv::minMaxIdx(sharedMat(1), &low, &high);
  keep(&low);
}

void grey(int channels) {
  static cv::Mat out;
  cv::cvtColor(sharedMat(channels), out, channels == 3 ? cv::COLOR_RGB2GRAY : cv::COLOR_RGBA2GRAY);
}

void flip(int channels, int code) {
  static cv::Mat pictures[5];
  cv::Mat& picture = pictures[channels];
  if (picture.empty()) picture = sharedMat(channels).clone();
  cv::flip(picture, picture, code);
}

void thresholdInPlace() {
  static cv::Mat picture = sharedMat(1).clone();
  cv::threshold(picture, picture, 127, 255, cv::THRESH_BINARY);
}

[[maybe_unused]] const bool added[] = {
    add("channel extremes L8", "OpenCV", &extremesOfOne),
    add("channel extremes RGBA", "OpenCV", [] { extremes(4); }),
    add("grey of RGBA", "OpenCV", [] { grey(4); }),
    add("grey of RGB", "OpenCV", [] { grey(3); }),
    add("mirror RGBA left-right", "OpenCV", [] { flip(4, 1); }),
    add("mirror RGBA top-bottom", "OpenCV", [] { flip(4, 0); }),
    add("mirror RGBA both", "OpenCV", [] { flip(4, -1); }),
    add("mirror RGB left-right", "OpenCV", [] { flip(3, 1); }),
    add("dither 5, threshold", "OpenCV", &thresholdInPlace),
};

}  // namespace
}  // namespace qav::bench
