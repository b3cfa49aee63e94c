#pragma once

#include <QAVPixelImage.h>

#include <cstddef>
#include <memory>

struct ReleaseImage {
  void operator()(QAVPixelImage* image) const { image->Release(); }
};
/// An image whose one reference this pointer owns.
using ImagePtr = std::unique_ptr<QAVPixelImage, ReleaseImage>;

/// New image whose pixels hold nothing yet: for results that are written completely, so that the memory is touched
/// once. Formats without a pixel buffer are made as usual.
ImagePtr makeUnfilledImage(int width, int height, QAVPixelImageFormat format);

/// The samples of an image as bytes, whatever their size; null for formats without a pixel buffer.
const unsigned char* pixelsToRead(const QAVPixelImage& image);
unsigned char* pixelsToModify(QAVPixelImage& image);

struct ImageSize {
  int width = 0;
  int height = 0;

  std::size_t pixels() const noexcept { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
};
ImageSize sizeOf(const QAVPixelImage& image);

/// True when the image's format holds pixels and the image has them (an empty image needs none).
bool holdsPixels(const QAVPixelImage& image);
