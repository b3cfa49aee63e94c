#include <QAVPrintEncoding.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace {

constexpr std::uint8_t kEndOfData = 128;
constexpr std::size_t kLongest = 128;

// What the records ask for. A last record counts in full even when its bytes are missing.
std::size_t decodedSize(const std::uint8_t* src, std::size_t srcLen) {
  std::size_t size = 0;
  for (std::size_t i = 0; i < srcLen && src[i] != kEndOfData;) {
    const std::size_t length = src[i];
    const bool literal = length < kEndOfData;
    size += literal ? length + 1 : 257 - length;
    i += literal ? length + 2 : 2;
  }
  return size;
}

/// Decodes into a buffer of exactly the size that decodedSize has found.
class Decoder {
 public:
  Decoder(const std::uint8_t* src, std::size_t srcLen, std::uint8_t* out, std::size_t bound)
      : src_(src), srcLen_(srcLen), out_(out), bound_(bound) {}

  /// Returns the number of bytes written.
  std::size_t run() {
    while (i_ < srcLen_ && src_[i_] != kEndOfData) {
      const std::size_t length = src_[i_++];
      if (length < kEndOfData)
        copy(length + 1);
      else
        repeat(257 - length);
    }
    return written_;
  }

 private:
  // Far from both ends whole blocks are moved: faster than the exact number of bytes, and the next record overwrites
  // the surplus.
  void copy(std::size_t count) {
    if (srcLen_ - i_ >= kLongest && bound_ - written_ >= kLongest) {
      std::memcpy(out_ + written_, src_ + i_, kLongest);
    } else {
      count = std::min({count, srcLen_ - i_, bound_ - written_});
      std::memcpy(out_ + written_, src_ + i_, count);
    }
    i_ += count;
    written_ += count;
  }

  void repeat(std::size_t count) {
    if (i_ >= srcLen_) return;
    if (bound_ - written_ >= kLongest) {
      std::memset(out_ + written_, src_[i_], kLongest);
    } else {
      count = std::min(count, bound_ - written_);
      std::memset(out_ + written_, src_[i_], count);
    }
    ++i_;
    written_ += count;
  }

  const std::uint8_t* src_;
  std::size_t srcLen_;
  std::uint8_t* out_;
  std::size_t bound_;
  std::size_t i_ = 0;
  std::size_t written_ = 0;
};

}  // namespace

HRESULT RunLengthDecode(const std::uint8_t* src, unsigned int srcLen, std::uint8_t*& out, unsigned int& outLen,
                        int sizeOnly) {
  if (!src || srcLen == 0) return E_FAIL;
  out = nullptr;
  outLen = 0;
  if (sizeOnly != 0 && sizeOnly != 1) return E_FAIL;
  const std::size_t size = decodedSize(src, srcLen);
  if (size == 0 || size > std::numeric_limits<unsigned int>::max()) return E_FAIL;
  if (sizeOnly == 1) {
    outLen = static_cast<unsigned int>(size);
    return S_OK;
  }
  auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(size);
  const std::size_t written = Decoder(src, srcLen, bytes.get(), size).run();
  if (written == 0) return E_FAIL;
  std::memset(bytes.get() + written, 0, size - written);
  out = bytes.release();
  outLen = static_cast<unsigned int>(written);
  return S_OK;
}
