#pragma once

#include <QAVPrtImageIterator.h>

#include "kernels/PrintSamples.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qav {

/// The first samples of an image as a window that moves over them: in the image's own memory where many lie together,
/// else in a buffer. It holds what run-length coding needs to know of them.
class SampleWindow {
 public:
  SampleWindow(const QAVPixelImage* image, int bottomUp, int mode, std::size_t samples)
      : iterator_(image, bottomUp, mode), toCome_(samples) {}

  /// Makes sure that a record can begin at the window's place; false when all samples are done.
  bool fill();
  const kernels::RunLengthInput& input() const { return input_; }
  /// The place of the next sample in the window.
  std::size_t at() const { return at_; }
  void moveTo(std::size_t at) { at_ = at; }

 private:
  static constexpr std::size_t kSize = std::size_t{16} * 1024;
  static constexpr std::size_t kSizeWithMargin = kSize + kernels::kRunLengthLookahead;
  static constexpr std::size_t kPadding = kernels::kRunLengthLookahead + 65;  ///< up to the end of a word, and one

  std::span<const std::uint8_t> take(std::span<std::uint8_t> room);
  void gather(std::size_t held);
  void compare();

  QAVPrtImageIterator iterator_;
  std::size_t toCome_;                     ///< samples that the iterator still has
  std::span<const std::uint8_t> pending_;  ///< samples taken from it that are not in the buffer
  bool inPlace_ = false;                   ///< the window lies at the front of the pending samples
  bool last_ = false;                      ///< the window holds the last samples, and they are padded
  kernels::RunLengthInput input_;
  std::size_t at_ = 0;
  std::array<std::uint8_t, kSizeWithMargin + kPadding> buffer_;
  std::array<std::uint64_t, (kSizeWithMargin + kPadding) / 64 + 2> equal_{};
};

}  // namespace qav
