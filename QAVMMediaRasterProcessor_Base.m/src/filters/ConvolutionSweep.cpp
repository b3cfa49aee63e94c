#include "filters/ConvolutionSweep.h"

#include <algorithm>
#include <cstring>

namespace qav {

using kernels::ConvolutionRows;

ConvolutionSweep::ConvolutionSweep(unsigned char* pixels, int width, int height, const ConvolutionKernel& kernel,
                                   float weightSum)
    : pixels_(pixels),
      height_(height),
      count_(4 * static_cast<std::size_t>(width)),
      reachX_(std::min<std::int64_t>(kernel.half(), width - 1)),
      reachY_(std::min<std::int64_t>(kernel.half(), height - 1)),
      plan_(planConvolution(kernel, weightSum, reachX_, reachY_)),
      padded_((count_ + 8 * static_cast<std::size_t>(reachX_) + ConvolutionRows::kSlack + 15) / 16 * 16),
      ringRows_(std::min<std::int64_t>(2 * reachY_ + ConvolutionRows::kMostResults, height)),
      ringStride_((padded_ + 16) * plan_.arithmetic->sampleBytes),
      staged_(makeAlignedArray<unsigned char>(padded_ + 64)),
      ring_(makeAlignedArray<unsigned char>(static_cast<std::size_t>(ringRows_) * ringStride_)) {
  std::fill_n(staged_.get(), padded_ + 64, static_cast<unsigned char>(0));
  std::fill_n(ring_.get(), static_cast<std::size_t>(ringRows_) * ringStride_, static_cast<unsigned char>(0));
}

void ConvolutionSweep::widenRow(std::int64_t y) {
  const auto widen = plan_.arithmetic->widen;
  unsigned char* const bytes = widen ? staged_.get() : ringRow(y);
  std::memcpy(bytes + 4 * reachX_, row(y), count_);
  if (widen) widen(bytes, padded_, ringRow(y));
}

void ConvolutionSweep::convolveRows(std::int64_t y, int results) {
  const std::int64_t top = std::max<std::int64_t>(0, y - reachY_);
  const std::int64_t bottom = std::min(height_ - 1, y + results - 1 + reachY_);
  sources_.clear();
  for (std::int64_t r = top; r <= bottom; ++r) sources_.push_back(ringRow(r));
  unsigned char* const out[] = {row(y), row(std::min(y + 1, height_ - 1)), row(std::min(y + 2, height_ - 1))};
  plan_.arithmetic->convolve({.rows = sources_.data(),
                              .rowCount = bottom - top + 1,
                              .weights = plan_.weights.data(),
                              .weightRows = 2 * reachY_ + 1,
                              .weightStride = plan_.weightStride,
                              .firstWeightRow = top - y + reachY_,
                              .results = results,
                              .out = out,
                              .count = count_,
                              .quotient = plan_.quotient});
}

void ConvolutionSweep::run() {
  constexpr int most = ConvolutionRows::kMostResults;
  std::int64_t widened = 0;
  for (std::int64_t y = 0; y < height_;) {
    const int results = reachY_ > 0 && height_ - y >= most ? most : 1;
    for (; widened < std::min(height_, y + results + reachY_); ++widened) widenRow(widened);
    convolveRows(y, results);
    y += results;
  }
}

}  // namespace qav
