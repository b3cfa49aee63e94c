#pragma once

#include <cstdint>

namespace qav {

/// A square kernel of the caller's: (2 half + 1)^2 weights row by row, so that an even size is read as the next odd
/// one. A negative half has no weights.
class ConvolutionKernel {
 public:
  ConvolutionKernel(int size, const float* weights)
      : half_(size / 2), taps_(half_ < 0 ? 0 : 2 * half_ + 1), weights_(weights) {}

  std::int64_t half() const { return half_; }
  const float* begin() const { return weights_; }
  const float* end() const { return weights_ + taps_ * taps_; }
  /// Weights for the neighbours in the row `dy` below, from the one `dx` to the right on. Both from -half to half.
  const float* at(std::int64_t dy, std::int64_t dx) const { return weights_ + (dy + half_) * taps_ + dx + half_; }
  /// In single precision, in storage order.
  float sum() const {
    float sum = 0.0f;
    for (const float weight : *this) sum += weight;
    return sum;
  }

 private:
  std::int64_t half_;
  std::int64_t taps_;
  const float* weights_;
};

}  // namespace qav
