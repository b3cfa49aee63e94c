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
      kernel_(kernel),
      weightSum_(weightSum),
      reachX_(std::min<std::int64_t>(kernel.half(), width - 1)),
      reachY_(std::min<std::int64_t>(kernel.half(), height - 1)),
      plan_(planConvolution(kernel, weightSum, reachX_, reachY_, Bounding::Yes)),
      padded_((count_ + 8 * static_cast<std::size_t>(reachX_) + ConvolutionRows::kSlack + 15) / 16 * 16),
      ringRows_(std::min<std::int64_t>(2 * reachY_ + ConvolutionRows::kMostResults, height)),
      staged_(makeAlignedArray<unsigned char>(padded_ + 64)) {
  std::fill_n(staged_.get(), padded_ + 64, static_cast<unsigned char>(0));
  allocateRing();
}

void ConvolutionSweep::allocateRing() {
  ringStride_ = (padded_ + 16) * plan_.arithmetic->sampleBytes;
  ring_ = makeAlignedArray<unsigned char>(static_cast<std::size_t>(ringRows_) * ringStride_);
  std::fill_n(ring_.get(), static_cast<std::size_t>(ringRows_) * ringStride_, static_cast<unsigned char>(0));
}

void ConvolutionSweep::widenRow(std::int64_t y) {
  const auto widen = plan_.arithmetic->widen;
  unsigned char* const bytes = widen ? staged_.get() : ringRow(y);
  std::memcpy(bytes + 4 * reachX_, row(y), count_);
  if (widen) widen(bytes, padded_, ringRow(y));
}

// Looking at a sample again takes a few times as long as bounding it.
bool ConvolutionSweep::doubtsTooMuch(std::int64_t rowsDone) const {
  return plan_.bounded && plan_.bounded->recomputed > static_cast<std::size_t>(rowsDone) * count_ * 3 / 8;
}

// The picture has too much that looks like ties: from here on its sums are taken in single precision. The rows of the
// ring are converted, as those of the picture are overwritten by now.
void ConvolutionSweep::stopBounding() {
  const AlignedArray<unsigned char> oldRing = std::move(ring_);
  const std::size_t oldStride = ringStride_, oldBytes = plan_.arithmetic->sampleBytes;
  plan_ = planConvolution(kernel_, weightSum_, reachX_, reachY_, Bounding::No);
  allocateRing();
  for (std::int64_t y = std::max<std::int64_t>(0, widened_ - ringRows_); y < widened_; ++y) {
    const unsigned char* const from = oldRing.get() + static_cast<std::size_t>(y % ringRows_) * oldStride;
    for (std::size_t i = 0; i < padded_; ++i) staged_[i] = from[i * oldBytes];
    plan_.arithmetic->widen(staged_.get(), padded_, ringRow(y));
  }
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
                              .quotient = plan_.quotient,
                              .start = plan_.bounded ? plan_.bounded->start : 0,
                              .bound = plan_.bounded ? &plan_.bounded->bound : nullptr});
}

void ConvolutionSweep::run() {
  constexpr int most = ConvolutionRows::kMostResults;
  for (std::int64_t y = 0; y < height_;) {
    const int results = reachY_ > 0 && height_ - y >= most ? most : 1;
    for (; widened_ < std::min(height_, y + results + reachY_); ++widened_) widenRow(widened_);
    convolveRows(y, results);
    y += results;
    if (doubtsTooMuch(y)) stopBounding();
  }
}

}  // namespace qav
