#include "rivals/opencv/Pictures.h"
#include "support/FilterKernels.h"

#include <opencv2/imgproc.hpp>

namespace qav::bench {
namespace {

cv::Mat& result() {
  static cv::Mat out;
  return out;
}

std::function<void()> convolving(int channels, const cv::Mat& kernel, int border = cv::BORDER_REPLICATE) {
  return [=, out = cv::Mat()]() mutable {
    cv::filter2D(sharedMat(channels), out, -1, kernel, cv::Point(-1, -1), 0, border | cv::BORDER_ISOLATED);
  };
}

cv::Mat kernelOf(int size, const std::vector<float>& weights, bool normalised) {
  cv::Mat kernel = cv::Mat(size, size, CV_32F, const_cast<float*>(weights.data())).clone();
  if (normalised) kernel /= cv::sum(kernel)[0];
  return kernel;
}

cv::Mat kernel3x3(float corner, float edge, float centre) {
  return kernelOf(3, {corner, edge, corner, edge, centre, edge, corner, edge, corner}, false);
}

std::function<void()> blurring(int channels) {
  return [=, out = cv::Mat()]() mutable { cv::blur(sharedMat(channels), out, {3, 3}, {-1, -1}, cv::BORDER_REPLICATE); };
}

std::function<void()> gaussian(int channels) {
  return [=, out = cv::Mat()]() mutable {
    cv::GaussianBlur(sharedMat(channels), out, {3, 3}, 0, 0, cv::BORDER_REPLICATE);
  };
}

// Half the sum of the magnitudes is the nearest that saturating 8-bit arithmetic comes to; its cost is the same.
void gradientMagnitude() {
  static cv::Mat dx, dy, ax, ay;
  cv::spatialGradient(sharedMat(1), dx, dy, 3, cv::BORDER_REPLICATE);
  cv::convertScaleAbs(dx, ax);
  cv::convertScaleAbs(dy, ay);
  cv::add(ax, ay, result());
}

std::function<void()> morphing(int operation) {
  return [=, kernel = cv::getStructuringElement(cv::MORPH_RECT, {3, 3}), out = cv::Mat()]() mutable {
    cv::morphologyEx(sharedMat(1), out, operation, kernel, {-1, -1}, 1, cv::BORDER_REPLICATE);
  };
}

std::function<void()> userKernel(int size, std::vector<float> weights) {
  return convolving(4, kernelOf(size, weights, true), cv::BORDER_CONSTANT);
}

[[maybe_unused]] const bool added[] = {
    add("kernel 3x3 of floats", "OpenCV", userKernel(3, unevenWeights(3))),
    add("kernel 7x7 of floats", "OpenCV", userKernel(7, unevenWeights(7))),
    add("kernel 7x7 of floats, opaque", "OpenCV", userKernel(7, unevenWeights(7))),
    add("kernel 7x7 of floats, bell", "OpenCV", userKernel(7, bellWeights(7))),
    add("kernel 7x7 of floats, box", "OpenCV", userKernel(7, equalWeights(7))),
    add("kernel 3x3 of whole weights", "OpenCV", userKernel(3, wholeWeights(3))),
    add("kernel 7x7 of whole weights", "OpenCV", userKernel(7, wholeWeights(7))),
    add("box RGBA", "OpenCV", blurring(4)),
    add("box L8", "OpenCV", blurring(1)),
    add("light RGBA", "OpenCV", blurring(4)),
    add("light L8", "OpenCV", blurring(1)),
    add("Gauss RGBA", "OpenCV", gaussian(4)),
    add("Gauss L8", "OpenCV", gaussian(1)),
    add("centre RGBA", "OpenCV", gaussian(4)),
    add("centre L8", "OpenCV", gaussian(1)),
    add("sharpen light RGBA", "OpenCV", convolving(4, kernel3x3(0, -0.0625f, 1.25f))),
    add("sharpen medium RGBA", "OpenCV", convolving(4, kernel3x3(0, -1.0f / 6, 5.0f / 3))),
    add("sharpen RGBA", "OpenCV", convolving(4, kernel3x3(0, -1, 5))),
    add("sharpen cross RGBA", "OpenCV", convolving(4, kernel3x3(1, -2, 5))),
    add("sharpen strong RGBA", "OpenCV", convolving(4, kernel3x3(-1, -1, 9))),
    add("Sobel L8", "OpenCV", &gradientMagnitude),
    add("Laplace L8", "OpenCV", convolving(1, kernel3x3(0.70710677f, 1, -6.8284273f))),
    add("Sobel rows L8", "OpenCV",
        [] { cv::Sobel(sharedMat(1), result(), CV_8U, 0, 1, 3, 1, 0, cv::BORDER_REPLICATE); }),
    add("median L8", "OpenCV", [] { cv::medianBlur(sharedMat(1), result(), 3); }),
    add("minimum L8", "OpenCV", morphing(cv::MORPH_ERODE)),
    add("maximum L8", "OpenCV", morphing(cv::MORPH_DILATE)),
    add("opening L8", "OpenCV", morphing(cv::MORPH_OPEN)),
    add("closing L8", "OpenCV", morphing(cv::MORPH_CLOSE)),
};

}  // namespace
}  // namespace qav::bench
