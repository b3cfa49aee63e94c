#include "filters/ConvolutionSweep.h"

#include "kernels/Convolution.h"

#include <algorithm>

namespace qav {

ConvolutionSweep::ConvolutionSweep(unsigned char* pixels, int width, int height, const ConvolutionKernel& kernel)
    : pixels_(pixels),
      height_(height),
      count_(4 * static_cast<std::size_t>(width)),
      kernel_(kernel),
      reachX_(std::min<std::int64_t>(kernel.half(), width - 1)),
      reachY_(std::min<std::int64_t>(kernel.half(), height - 1)),
      ringRows_(std::min<std::int64_t>(2 * reachY_ + 1, height)),
      ringStride_((count_ + 8 * static_cast<std::size_t>(reachX_) + kernels::kConvolutionSlack + 15) / 16 * 16),
      ring_(makeAlignedArray<float>(static_cast<std::size_t>(ringRows_) * ringStride_)) {
  std::fill_n(ring_.get(), static_cast<std::size_t>(ringRows_) * ringStride_, 0.0f);
}

void ConvolutionSweep::widenRow(std::int64_t y) {
  float* const samples = ringRow(y) + 4 * reachX_;
  kernels::convolutionKernels().widen(pixels_ + static_cast<std::size_t>(y) * count_, count_, samples);
}

void ConvolutionSweep::convolveRow(std::int64_t y, float weightSum) {
  rows_.clear();
  weights_.clear();
  for (std::int64_t r = std::max<std::int64_t>(0, y - reachY_); r <= std::min(height_ - 1, y + reachY_); ++r) {
    rows_.push_back(ringRow(r));
    weights_.push_back(kernel_.at(r - y, -reachX_));
  }
  kernels::convolutionKernels().convolve({rows_.data(), weights_.data(), rows_.size(),
                                          static_cast<std::size_t>(2 * reachX_ + 1), weightSum, count_,
                                          pixels_ + static_cast<std::size_t>(y) * count_});
}

void ConvolutionSweep::run(float weightSum) {
  for (std::int64_t y = 0; y < reachY_; ++y) widenRow(y);
  for (std::int64_t y = 0; y < height_; ++y) {
    if (y + reachY_ < height_) widenRow(y + reachY_);
    convolveRow(y, weightSum);
  }
}

}  // namespace qav
