#include "rivals/opencv/Pictures.h"

#include <opencv2/core.hpp>

namespace qav::bench {
namespace {

cv::Mat gammaTable(int channels) {
  cv::Mat table(1, 256, CV_8UC(channels));
  for (int i = 0; i < 256 * channels; ++i) table.data[i] = static_cast<uchar>(255 - i / channels);
  return table;
}

void lookUp(int channels) {
  static const cv::Mat tables[] = {gammaTable(1), gammaTable(3)};
  static cv::Mat out[5];
  cv::LUT(sharedMat(channels), tables[channels == 3], out[channels]);
}

[[maybe_unused]] const bool added[] = {
    add("table L8", "OpenCV", [] { lookUp(1); }),
    add("table RGBA, all channels", "OpenCV", [] { lookUp(4); }),
    add("table RGBA, without alpha", "OpenCV", [] { lookUp(4); }),
    add("balance RGB", "OpenCV", [] { lookUp(3); }),
    add("negative RGB of RGBA", "OpenCV",
        [] {
          static cv::Mat in_place = sharedMat(4).clone();
          cv::bitwise_xor(in_place, cv::Scalar(255, 255, 255, 0), in_place);
        }),
};

}  // namespace
}  // namespace qav::bench
