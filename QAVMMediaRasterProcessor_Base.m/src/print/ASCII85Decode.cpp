#include <QAVPrintEncoding.h>

#include "kernels/Base85.h"

#include <cstring>
#include <limits>
#include <memory>

namespace {

using qav::kernels::base85Kernels;
using qav::kernels::kBase85;
using qav::kernels::kBase85Zero;

constexpr std::uint32_t kWeights[5] = {52200625, 614125, 7225, 85, 1};

bool isDigit(std::uint8_t c) { return static_cast<std::uint8_t>(c - kBase85Zero) < kBase85; }

// NUL, backspace, tab, line feed, form feed, carriage return, space, DEL; not vertical tab.
bool isWhiteSpace(std::uint8_t c) {
  constexpr std::uint64_t spaces =
      1ull << 0 | 1ull << 8 | 1ull << 9 | 1ull << 10 | 1ull << 12 | 1ull << 13 | 1ull << 32;
  return c < 64 ? (spaces >> c & 1) != 0 : c == 127;
}

/// Receives decoded groups and counts their bytes.
struct Counter {
  void addGroups(const std::uint8_t*, std::size_t groups) { bytes += 4 * groups; }
  void addValue(std::uint32_t, std::size_t count) { bytes += count; }
  std::size_t bytes = 0;
};

/// Receives decoded groups and writes them to a buffer that Counter has found large enough.
struct Writer {
  void addGroups(const std::uint8_t* digits, std::size_t groups) {
    base85Kernels().decodeGroups(digits, groups, at);
    at += 4 * groups;
  }
  void addValue(std::uint32_t value, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) *at++ = static_cast<std::uint8_t>(value >> (24 - 8 * i));
  }
  std::uint8_t* at;
};

/// Reads base-85 text: runs of digits many groups at a time, everything else character by character.
template <class Sink>
class Scanner {
 public:
  Scanner(const std::uint8_t* src, std::size_t srcLen, Sink& sink) : at_(src), end_(src + srcLen), sink_(sink) {}

  /// False for malformed text.
  bool run() {
    while (at_ < end_) {
      if (digits_ == 0 && takeGroups()) continue;
      if (!takeCharacter(*at_++)) return false;
    }
    return finishGroup();
  }

 private:
  bool takeGroups() {
    const std::size_t groups = base85Kernels().digitRun(at_, static_cast<std::size_t>(end_ - at_)) / 5;
    sink_.addGroups(at_, groups);
    at_ += 5 * groups;
    return groups > 0;
  }

  bool takeCharacter(std::uint8_t c) {
    if (isDigit(c)) {
      addDigit(c);
      return true;
    }
    if (isWhiteSpace(c)) return true;
    if (c == 'z') {
      sink_.addValue(0, 4);
      return digits_ == 0;
    }
    if (c != '~' || at_ == end_ || *at_++ != '>') return false;
    return finishGroup();
  }

  void addDigit(std::uint8_t c) {
    value_ += static_cast<std::uint32_t>(c - kBase85Zero) * kWeights[digits_++];
    if (digits_ < 5) return;
    sink_.addValue(value_, 4);
    value_ = 0;
    digits_ = 0;
  }

  // A short group is rounded up by one unit of its first missing digit.
  bool finishGroup() {
    if (digits_ == 1) return false;
    if (digits_ > 0) sink_.addValue(value_ + kWeights[digits_ - 1], digits_ - 1);
    value_ = 0;
    digits_ = 0;
    return true;
  }

  const std::uint8_t* at_;
  const std::uint8_t* end_;
  Sink& sink_;
  std::uint32_t value_ = 0;
  std::size_t digits_ = 0;
};

}  // namespace

HRESULT ASCII85Decode(const std::uint8_t* src, unsigned int srcLen, std::uint8_t*& out, unsigned int& outLen,
                      int sizeOnly) {
  out = nullptr;
  outLen = 0;
  Counter counter;
  const bool wellFormed = Scanner(src, srcLen, counter).run();
  const bool countable = counter.bytes <= std::numeric_limits<unsigned int>::max();
  if (sizeOnly != 0) {
    if (!wellFormed) return E_UNEXPECTED;
    if (sizeOnly != 1) return S_OK;
    if (!countable) return E_FAIL;
    outLen = static_cast<unsigned int>(counter.bytes);
    return S_OK;
  }
  if (!wellFormed || !countable || counter.bytes == 0) return E_FAIL;
  auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(counter.bytes);
  Writer writer{bytes.get()};
  Scanner(src, srcLen, writer).run();
  out = bytes.release();
  outLen = static_cast<unsigned int>(counter.bytes);
  return S_OK;
}
