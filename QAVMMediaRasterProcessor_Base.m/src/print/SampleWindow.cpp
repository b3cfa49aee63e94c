#include "print/SampleWindow.h"

#include <algorithm>
#include <cstring>

namespace qav {

using kernels::kRunLengthLookahead;

bool SampleWindow::fill() {
  if (last_) return left_ > 0;
  if (left_ > kRunLengthLookahead) return true;
  gather();
  return left_ > 0;
}

std::span<const std::uint8_t> SampleWindow::take(std::span<std::uint8_t> room) {
  auto samples = iterator_.NextSamples(room.first(std::min(room.size(), toCome_)));
  samples = samples.first(std::min(samples.size(), toCome_));
  toCome_ = samples.empty() ? 0 : toCome_ - samples.size();
  return samples;
}

// Moves what is left to the front of the buffer and fills the rest of it, unless so much lies together in the image
// that the window can go there.
void SampleWindow::gather() {
  std::memmove(buffer_.data(), at_, left_);
  at_ = buffer_.data();
  while (left_ < kBufferSize && (toCome_ > 0 || !pending_.empty())) {
    const std::span room(buffer_.data() + left_, kBufferSize - left_);
    if (pending_.empty()) pending_ = take(room);
    if (left_ == 0 && pending_.size() > kBufferSize) {
      at_ = pending_.data();
      left_ = pending_.size();
      pending_ = {};
      return;
    }
    const std::size_t moved = std::min(pending_.size(), room.size());
    if (pending_.data() != room.data()) std::memcpy(room.data(), pending_.data(), moved);
    left_ += moved;
    pending_ = pending_.subspan(moved);
  }
  if (toCome_ > 0 || !pending_.empty()) return;
  last_ = true;
  if (left_ > 0) std::memset(buffer_.data() + left_, ~buffer_[left_ - 1], kRunLengthLookahead);
}

}  // namespace qav
