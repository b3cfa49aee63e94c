#pragma once

#include "support/GuardedBytes.h"
#include "support/Images.h"

namespace qav::test {

/// A copy of an image of bytes in guarded memory, which begins `misalignment` bytes behind where it otherwise would.
class GuardedImage {
 public:
  GuardedImage(const QAVPixelImage& original, std::size_t misalignment) : memory_(byteCount(original), misalignment) {
    const auto [width, height] = extentOf(original);
    std::copy_n(original.GetPixelsToRead(), memory_.size(), memory_.data());
    image_.reset(new QAVPixelImage(width, height, original.GetFormat(), memory_.data(), QAVDeallocatePixelsByCaller));
  }

  QAVPixelImage& operator*() { return *image_; }
  [[nodiscard]] bool guardsIntact() const { return memory_.guardsIntact(); }

 private:
  GuardedBytes memory_;
  Image image_;
};

}  // namespace qav::test
