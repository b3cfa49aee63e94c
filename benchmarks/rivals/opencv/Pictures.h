#pragma once

#include "support/Comparison.h"

#include <opencv2/core.hpp>

namespace qav::bench {

/// The photograph as a matrix of 8-bit channels. OpenCV is held to one thread.
inline cv::Mat photographMat(int width, int height, int channels) {
  cv::setNumThreads(1);
  const auto& bytes = photograph(width, height, channels);
  return cv::Mat(height, width, CV_8UC(channels), const_cast<std::uint8_t*>(bytes.data())).clone();
}

/// One shared picture of the usual size for each number of channels, for work that only reads it.
inline const cv::Mat& sharedMat(int channels) {
  static cv::Mat mats[5];
  cv::Mat& mat = mats[channels];
  if (mat.empty()) mat = photographMat(kWidth, kHeight, channels);
  return mat;
}

}  // namespace qav::bench
