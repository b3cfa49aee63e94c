#include "print/SampleWindow.h"

#include <algorithm>
#include <cstring>

namespace qav {

using kernels::kRunLengthLookahead;

bool SampleWindow::fill() {
  if (at_ < input_.count) return true;
  if (last_) return false;
  std::size_t held = 0;
  if (inPlace_) {
    pending_ = pending_.subspan(at_);
  } else if (input_.samples) {
    held = input_.end - at_;
    std::memmove(buffer_.data(), input_.samples + at_, held);
  }
  at_ = 0;
  if (held == 0 && pending_.empty()) pending_ = take(buffer_);
  inPlace_ = held == 0 && pending_.size() > kSizeWithMargin;
  if (inPlace_)
    input_ = {pending_.data(), equal_.data(), kSize, kSizeWithMargin};
  else
    gather(held);
  compare();
  return input_.count > 0;
}

std::span<const std::uint8_t> SampleWindow::take(std::span<std::uint8_t> room) {
  auto samples = iterator_.NextSamples(room.first(std::min({room.size(), toCome_, kSizeWithMargin})));
  samples = samples.first(std::min(samples.size(), toCome_));
  toCome_ = samples.empty() ? 0 : toCome_ - samples.size();
  return samples;
}

// Fills the buffer behind the samples that it holds already.
void SampleWindow::gather(std::size_t held) {
  while (held < kSizeWithMargin && (toCome_ > 0 || !pending_.empty())) {
    const std::span room(buffer_.data() + held, kSizeWithMargin - held);
    if (pending_.empty()) pending_ = take(room);
    const std::size_t moved = std::min(pending_.size(), room.size());
    if (pending_.data() != room.data()) std::memcpy(room.data(), pending_.data(), moved);
    held += moved;
    pending_ = pending_.subspan(moved);
  }
  last_ = toCome_ == 0 && pending_.empty();
  if (last_ && held > 0) std::memset(buffer_.data() + held, ~buffer_[held - 1], kPadding);
  input_ = {buffer_.data(), equal_.data(), last_ ? held : kSize, held};
}

void SampleWindow::compare() {
  const std::size_t words = (input_.count + kRunLengthLookahead + 63) / 64;
  if (input_.count > 0) kernels::printSamplesKernels().equalToNext(input_.samples, words, equal_.data());
}

}  // namespace qav
