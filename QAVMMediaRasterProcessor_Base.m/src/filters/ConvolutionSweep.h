#pragma once

#include "filters/AlignedArray.h"
#include "filters/ConvolutionKernel.h"

#include <cstddef>
#include <vector>

namespace qav {

/// Convolves an RGBA picture in place, row by row. The rows that are still needed are kept as floats in a ring, with
/// zeros at both ends: adding a finite weight's zero product leaves a sum as it is, so these taps count as left out.
/// Rows outside the picture are left out indeed.
class ConvolutionSweep {
 public:
  /// Sizes of 1 and more.
  ConvolutionSweep(unsigned char* pixels, int width, int height, const ConvolutionKernel& kernel);
  /// `weightSum` must be finite, and so every weight is.
  void run(float weightSum);

 private:
  float* ringRow(std::int64_t y) { return ring_.get() + static_cast<std::size_t>(y % ringRows_) * ringStride_; }
  void widenRow(std::int64_t y);
  void convolveRow(std::int64_t y, float weightSum);

  unsigned char* pixels_;
  std::int64_t height_;
  std::size_t count_;  ///< samples of a row
  ConvolutionKernel kernel_;
  // How far taps can lie from a pixel and still within the picture.
  std::int64_t reachX_;
  std::int64_t reachY_;
  std::int64_t ringRows_;
  std::size_t ringStride_;
  AlignedArray<float> ring_;
  std::vector<const float*> rows_;
  std::vector<const float*> weights_;
};

}  // namespace qav
