#pragma once

#include "filters/ConvolutionPlan.h"
#include "kernels/AlignedArray.h"

namespace qav {

/// Convolves an RGBA picture in place, a few rows at a time. The rows that are still needed are kept in a ring, with
/// zeros at both ends: adding a finite weight's zero product leaves a sum as it is, so these taps count as left out.
/// Rows outside the picture are left out indeed.
class ConvolutionSweep {
 public:
  /// Sizes of 1 and more; the sum of the kernel's weights must be finite, and so every weight is.
  ConvolutionSweep(unsigned char* pixels, int width, int height, const ConvolutionKernel& kernel, float weightSum);
  void run();

 private:
  void allocateRing();
  void widenRow(std::int64_t y);
  bool doubtsTooMuch(std::int64_t rowsDone) const;
  void stopBounding();
  void convolveRows(std::int64_t y, int results);
  unsigned char* row(std::int64_t y) { return pixels_ + static_cast<std::size_t>(y) * count_; }
  unsigned char* ringRow(std::int64_t y) { return ring_.get() + static_cast<std::size_t>(y % ringRows_) * ringStride_; }

  unsigned char* pixels_;
  std::int64_t height_;
  std::size_t count_;  ///< samples of a row
  ConvolutionKernel kernel_;
  float weightSum_;
  // How far taps can lie from a pixel and still within the picture.
  std::int64_t reachX_;
  std::int64_t reachY_;
  ConvolutionPlan plan_;
  std::size_t padded_;  ///< samples of a row with the zeros at its ends
  std::int64_t ringRows_;
  std::int64_t widened_ = 0;  ///< rows that are or have been in the ring
  std::size_t ringStride_;    ///< in bytes
  AlignedArray<unsigned char> staged_;
  AlignedArray<unsigned char> ring_;
  std::vector<const unsigned char*> sources_;
};

}  // namespace qav
