#pragma once

#include <QAVPrtImageIterator.h>

#include "kernels/PrintSamples.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qav {

/// The first samples of an image as a window that moves over them: in the image's own memory where many lie together,
/// else in a buffer. What the run-length kernels look at behind the samples is always there.
class SampleWindow {
 public:
  SampleWindow(const QAVPixelImage* image, int bottomUp, int mode, std::size_t samples)
      : iterator_(image, bottomUp, mode), toCome_(samples) {}

  /// Makes sure that a record can begin at the front of the window; false when all samples are done.
  bool fill();
  const std::uint8_t* samples() const { return at_; }
  /// Samples in the window, and how many of them a record may begin at.
  std::size_t end() const { return left_; }
  std::size_t count() const { return last_ ? left_ : left_ - kernels::kRunLengthLookahead; }
  void skip(std::size_t samples) {
    at_ += samples;
    left_ -= samples;
  }

 private:
  static constexpr std::size_t kBufferSize = std::size_t{16} * 1024;

  std::span<const std::uint8_t> take(std::span<std::uint8_t> room);
  void gather();

  QAVPrtImageIterator iterator_;
  std::size_t toCome_;                     ///< samples that the iterator still has
  std::span<const std::uint8_t> pending_;  ///< samples taken from it that are not in the window yet
  const std::uint8_t* at_ = buffer_.data();
  std::size_t left_ = 0;
  bool last_ = false;  ///< the window holds the last samples, and they are padded
  std::array<std::uint8_t, kBufferSize + kernels::kRunLengthLookahead> buffer_;
};

}  // namespace qav
