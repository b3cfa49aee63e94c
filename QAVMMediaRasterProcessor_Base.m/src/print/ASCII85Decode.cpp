#include <QAVPrintEncoding.h>

#include "kernels/Base85.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace {

using qav::kernels::base85Kernels;
using qav::kernels::Base85Run;
using qav::kernels::kBase85Zero;

/// Receives the digits of a text and counts the bytes that they stand for.
class Counter {
 public:
  /// Takes digits and white space; returns the place of the first other character.
  const std::uint8_t* takeDigits(const std::uint8_t* at, const std::uint8_t* end) {
    const Base85Run run = base85Kernels().countDigits(at, static_cast<std::size_t>(end - at));
    pending_ += run.digits;
    bytes_ += pending_ / 5 * 4;
    pending_ %= 5;
    return at + run.read;
  }
  void addZeros() { bytes_ += 4; }
  void finishGroup() {
    if (pending_ > 0) bytes_ += pending_ - 1;
    pending_ = 0;
  }
  std::size_t pending() const { return pending_; }  ///< digits of an unfinished group
  std::size_t bytes() const { return bytes_; }

 private:
  std::size_t pending_ = 0;
  std::size_t bytes_ = 0;
};

/// As Counter, and writes the bytes to a buffer that Counter has found large enough.
class Writer {
 public:
  explicit Writer(std::uint8_t* to) : to_(to) {}

  const std::uint8_t* takeDigits(const std::uint8_t* at, const std::uint8_t* end) {
    while (at < end) {
      const std::size_t together = std::min(static_cast<std::size_t>(end - at), kTogether);
      const Base85Run run = base85Kernels().squeezeDigits(at, together, digits_ + pending_);
      at += run.read;
      writeGroups(pending_ + run.digits);
      if (run.read < together) break;
    }
    return at;
  }
  void addZeros() { to_ = std::fill_n(to_, 4, std::uint8_t{0}); }
  // A short group is rounded up by one unit of its last digit.
  void finishGroup() {
    constexpr std::uint32_t weights[] = {52200625, 614125, 7225, 85};
    if (pending_ == 0) return;
    std::uint32_t value = weights[pending_ - 1];
    for (std::size_t i = 0; i < pending_; ++i)
      value += static_cast<std::uint32_t>(digits_[i] - kBase85Zero) * weights[i];
    for (std::size_t i = 0; i + 1 < pending_; ++i) *to_++ = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    pending_ = 0;
  }
  std::size_t pending() const { return pending_; }

 private:
  static constexpr std::size_t kTogether = 4096;

  void writeGroups(std::size_t digits) {
    const std::size_t groups = digits / 5;
    base85Kernels().decodeGroups(digits_, groups, to_);
    to_ += 4 * groups;
    pending_ = digits % 5;
    std::memmove(digits_, digits_ + 5 * groups, pending_);
  }

  std::uint8_t* to_;
  std::size_t pending_ = 0;
  std::uint8_t digits_[4 + kTogether + 64];
};

/// Reads base-85 text; false if it is malformed. "~>" ends a group, not the text.
template <class Sink>
bool scan(const std::uint8_t* at, const std::uint8_t* end, Sink& sink) {
  while ((at = sink.takeDigits(at, end)) < end) {
    const std::uint8_t c = *at++;
    if (c == 'z' && sink.pending() == 0) {
      sink.addZeros();
      continue;
    }
    if (c != '~' || at == end || *at++ != '>' || sink.pending() == 1) return false;
    sink.finishGroup();
  }
  if (sink.pending() == 1) return false;
  sink.finishGroup();
  return true;
}

}  // namespace

HRESULT ASCII85Decode(const std::uint8_t* src, unsigned int srcLen, std::uint8_t*& out, unsigned int& outLen,
                      int sizeOnly) {
  out = nullptr;
  outLen = 0;
  Counter counter;
  const bool wellFormed = scan(src, src + srcLen, counter);
  const bool countable = counter.bytes() <= std::numeric_limits<unsigned int>::max();
  if (sizeOnly != 0) {
    if (!wellFormed) return E_UNEXPECTED;
    if (sizeOnly != 1) return S_OK;
    if (!countable) return E_FAIL;
    outLen = static_cast<unsigned int>(counter.bytes());
    return S_OK;
  }
  if (!wellFormed || !countable || counter.bytes() == 0) return E_FAIL;
  auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(counter.bytes());
  Writer writer(bytes.get());
  scan(src, src + srcLen, writer);
  out = bytes.release();
  outLen = static_cast<unsigned int>(counter.bytes());
  return S_OK;
}
