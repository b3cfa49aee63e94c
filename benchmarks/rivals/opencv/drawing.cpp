#include "rivals/opencv/Pictures.h"
#include "support/Scenes.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace qav::bench {
namespace {

const cv::Scalar kColour(255, 136, 0, 255);

cv::Mat& canvas() {
  static cv::Mat mat = photographMat(kWidth, kHeight, 4);
  return mat;
}

void lines(int thickness) {
  for (const auto& [x1, y1, x2, y2] : longLines()) cv::line(canvas(), {x1, y1}, {x2, y2}, kColour, thickness);
}

// One 32-bit number a pixel; four channels it does not fill.
void fillMaze() {
  static cv::Mat mat = cv::Mat(kHeight, kWidth, CV_32SC1, const_cast<std::uint32_t*>(maze().data())).clone();
  cv::floodFill(mat, {2, 2}, cv::Scalar(~mat.at<int>(2, 2)), nullptr, cv::Scalar(0), cv::Scalar(0), 4);
}

void blend() {
  static cv::Mat target = canvas().clone(), alpha, weight, inverse, kept, mixed;
  const cv::Mat source(kHeight, kWidth, CV_8UC4, const_cast<std::uint8_t*>(nextBlendSource()));
  cv::extractChannel(source, alpha, 3);
  cv::merge(std::vector<cv::Mat>(4, alpha), weight);
  cv::bitwise_not(weight, inverse);
  cv::multiply(target, weight, kept, 1 / 255.0);
  cv::multiply(source, inverse, mixed, 1 / 255.0);
  cv::add(kept, mixed, target);
}

[[maybe_unused]] const bool added[] = {
    add("draw 256 lines", "OpenCV", [] { lines(1); }),
    add("draw 256 lines with a 7 x 7 brush", "OpenCV", [] { lines(7); }),
    add("fill ellipse", "OpenCV",
        [] {
          constexpr EllipseScene e;
          cv::ellipse(canvas(), {e.cx, e.cy}, {e.rx, e.ry}, 0, 0, 360, kColour, cv::FILLED);
        }),
    add("fill polygon", "OpenCV",
        [] {
          std::vector<std::vector<cv::Point>> polygon(1);
          for (std::size_t i = 0; i < star().size(); i += 2) polygon[0].emplace_back(star()[i], star()[i + 1]);
          cv::fillPoly(canvas(), polygon, kColour);
        }),
    add("flood fill of a maze", "OpenCV", fillMaze),
    add("blend, and arithmetic on whole pictures", "OpenCV", blend),
};

}  // namespace
}  // namespace qav::bench
