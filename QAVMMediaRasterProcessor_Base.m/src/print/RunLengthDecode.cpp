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
  Decoder(const std::uint8_t* src, std::size_t srcLen, std::uint8_t* out) : src_(src), srcLen_(srcLen), out_(out) {}

  /// Returns the number of bytes written.
  std::size_t run(const RunLengthMap& map) {
    RunLengthMap reached = map;
    runLengthRecordsKernels().decode(src_, srcLen_, out_, reached);
    for (std::size_t chain = 0; chain < kRunLengthChains; ++chain) {
      at_ = reached.starts[chain];
      bound_ = map.starts[chain + 1].written;
      while (at_.read < srcLen_ && at_.written < bound_) {
        const std::size_t length = src_[at_.read++];
        if (length < kRunLengthEnd)
          copy(length + 1);
        else
          repeat(257 - length);
      }
    }
    return at_.written;
  }

 private:
  void copy(std::size_t count) {
    count = std::min(count, srcLen_ - at_.read);
    std::memcpy(out_ + at_.written, src_ + at_.read, count);
    at_.read += count;
    at_.written += count;
  }

  void repeat(std::size_t count) {
    if (at_.read >= srcLen_) return;
    std::memset(out_ + at_.written, src_[at_.read++], count);
    at_.written += count;
  }

  const std::uint8_t* src_;
  std::size_t srcLen_;
  std::uint8_t* out_;
  std::size_t bound_ = 0;
  RunLengthPlace at_;
};

}  // namespace

HRESULT RunLengthDecode(const std::uint8_t* src, unsigned int srcLen, std::uint8_t*& out, unsigned int& outLen,
                        int sizeOnly) {
  if (!src || srcLen == 0) return E_FAIL;
  out = nullptr;
  outLen = 0;
  if (sizeOnly != 0 && sizeOnly != 1) return E_FAIL;
  const RunLengthMap map = runLengthRecordsKernels().count(src, srcLen);
  const std::size_t size = map.size();
  if (size == 0 || size > std::numeric_limits<unsigned int>::max()) return E_FAIL;
  if (sizeOnly == 1) {
    outLen = static_cast<unsigned int>(size);
    return S_OK;
  }
  auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(size);
  const std::size_t written = Decoder(src, srcLen, bytes.get()).run(map);
  if (written == 0) return E_FAIL;
  std::memset(bytes.get() + written, 0, size - written);
  out = bytes.release();
  outLen = static_cast<unsigned int>(written);
  return S_OK;
}
