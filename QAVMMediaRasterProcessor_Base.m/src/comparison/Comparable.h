#pragma once

#include <QAVPixelImage.h>

#include <cstddef>
#include <memory>

namespace qav {

struct ReleaseImage {
  void operator()(QAVPixelImage* image) const { image->Release(); }
};
/// An image whose one reference this pointer owns.
using OwnedImage = std::unique_ptr<QAVPixelImage, ReleaseImage>;

struct Extent {
  int width = 0;
  int height = 0;

  std::size_t pixels() const noexcept {
    return width > 0 && height > 0 ? static_cast<std::size_t>(width) * static_cast<std::size_t>(height) : 0;
  }
  friend bool operator==(const Extent&, const Extent&) = default;
};

inline Extent extentOf(const QAVPixelImage& image) {
  Extent extent;
  image.GetSize(extent.width, extent.height);
  return extent;
}

/// True for two images of one size of which the second has the bytes to be read at the first one's stride.
inline bool haveComparableShape(QAVPixelImage* first, QAVPixelImage* second) {
  return first && second && extentOf(*first) == extentOf(*second) &&
         second->GetBytesPerPixel() >= first->GetBytesPerPixel();
}

}  // namespace qav
