#include <QAVPrintEncoding.h>

#include "kernels/RunLengthRecords.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace {

using namespace qav::kernels;

/// Decodes into a buffer of exactly the size that the records ask for.
class Decoder {
 public:
  Decoder(const std::uint8_t* src, std::size_t srcLen, std::uint8_t* out, std::size_t bound)
      : src_(src), srcLen_(srcLen), out_(out), bound_(bound) {}

  /// Returns the number of bytes written.
  std::size_t run() {
    at_ = runLengthRecordsKernels().decode(src_, srcLen_, out_, bound_);
    while (at_.read < srcLen_ && src_[at_.read] != kRunLengthEnd) {
      const std::size_t length = src_[at_.read++];
      if (length < kRunLengthEnd)
        copy(length + 1);
      else
        repeat(257 - length);
    }
    return at_.written;
  }

 private:
  void copy(std::size_t count) {
    count = std::min({count, srcLen_ - at_.read, bound_ - at_.written});
    std::memcpy(out_ + at_.written, src_ + at_.read, count);
    at_.read += count;
    at_.written += count;
  }

  void repeat(std::size_t count) {
    if (at_.read >= srcLen_) return;
    count = std::min(count, bound_ - at_.written);
    std::memset(out_ + at_.written, src_[at_.read++], count);
    at_.written += count;
  }

  const std::uint8_t* src_;
  std::size_t srcLen_;
  std::uint8_t* out_;
  std::size_t bound_;
  RunLengthPlace at_;
};

}  // namespace

HRESULT RunLengthDecode(const std::uint8_t* src, unsigned int srcLen, std::uint8_t*& out, unsigned int& outLen,
                        int sizeOnly) {
  if (!src || srcLen == 0) return E_FAIL;
  out = nullptr;
  outLen = 0;
  if (sizeOnly != 0 && sizeOnly != 1) return E_FAIL;
  const std::size_t size = runLengthRecordsKernels().count(src, srcLen);
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
