#include <CCITT_G4.h>

#include "codecs/G4Page.h"
#include "codecs/G4RunTables.h"

#include <memory>
#include <new>
#include <utility>

namespace qav::g4 {
namespace {

class Encoder {
 public:
  Encoder(const unsigned char* bitmap, Page page, unsigned char* dst, int capacity)
      : bitmap_(bitmap), page_(page), output_{dst, static_cast<std::size_t>(capacity)} {
    // Memory that is not touched costs nothing: only elements that are there get to it.
    const std::size_t space = ChangingElements::space(static_cast<std::size_t>(page.width));
    lists_.reset(new int[2 * space]);
    reference_.place(lists_.get());
    coding_.place(lists_.get() + space);
  }

  // The number of coded bytes, or 0 when they do not fit.
  int encode() {
    reference_.close(page_.width);
    for (int row = 0; row < page_.height; ++row) {
      const auto firstBit = static_cast<std::uint64_t>(row) * static_cast<std::uint64_t>(page_.width);
      coding_.count = kernels_.findChanges(bitmap_, bitmap_ + page_.bytes(), firstBit, page_.width, coding_.at);
      coding_.close(page_.width);
      kernels_.codeRow(coding_.at, reference_.at, page_.width, kRunCodes, output_);
      std::swap(reference_, coding_);
    }
    return output_.capacity > output_.bytes + 1 + 2 ? putBlockEnd() : 0;
  }

 private:
  int putBlockEnd() {
    const std::uint64_t last = output_.pending | std::uint64_t{kBlockEnd} << (64 - kBlockEndBits - output_.held);
    storeBits(output_.to + output_.bytes, output_.to + output_.capacity, last);
    return static_cast<int>(output_.bytes) + (output_.held + kBlockEndBits + 7) / 8;
  }

  const kernels::G4RowKernels& kernels_ = kernels::g4RowKernels();
  const unsigned char* bitmap_;
  Page page_;
  kernels::G4Output output_;
  std::unique_ptr<int[]> lists_;
  ChangingElements reference_;
  ChangingElements coding_;
};

// The bitmap, or a copy of it where clearing the output would destroy it.
const unsigned char* readable(const unsigned char* bitmap, Page page, const unsigned char* dst, int capacity,
                              std::unique_ptr<unsigned char[]>& copy) {
  const auto start = reinterpret_cast<std::uintptr_t>(bitmap), target = reinterpret_cast<std::uintptr_t>(dst);
  const bool overlap = start < target + static_cast<std::uintptr_t>(capacity) && target < start + page.bytes();
  if (!overlap) return bitmap;
  copy.reset(new unsigned char[page.bytes()]);
  std::memcpy(copy.get(), bitmap, page.bytes());
  return copy.get();
}

}  // namespace
}  // namespace qav::g4

int CCITT_G4_enc(const unsigned char* bitmap, int* size, int& capacity, unsigned char* dst, int& length, int& error) {
  using namespace qav::g4;
  const Page page = pageOf(size);
  length = 0;
  error = kBadArgument;
  if (!page.valid() || !bitmap) return 3;
  if (capacity < 0 || !dst) return 2;
  try {
    std::unique_ptr<unsigned char[]> copy;
    bitmap = readable(bitmap, page, dst, capacity, copy);
    Encoder encoder(bitmap, page, dst, capacity);
    std::memset(dst, 0, static_cast<std::size_t>(capacity));
    length = encoder.encode();
  } catch (const std::bad_alloc&) {
    return 3;
  }
  error = length > 0 ? 0 : kDoesNotFit;
  return error == 0 ? 0 : 1;
}
