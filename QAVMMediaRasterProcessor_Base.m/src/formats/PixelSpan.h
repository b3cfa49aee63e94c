#pragma once

#include <QAVPixelImage.h>

#include <cstddef>

namespace qav {

/// The pixels of a byte-format image (`L8` to `RGBA8888`) as one flat run.
struct PixelSpan {
  QAVPixelImageFormat format = NoPixelStorage;
  unsigned char* bytes = nullptr;  ///< null when the image's format has no byte buffer, or it cannot be changed
  int width = 0;
  int height = 0;
  int channels = 0;        ///< bytes of a pixel
  std::size_t pixels = 0;  ///< width x height; 0 for sizes below 1
};

/// Channels of a byte format, 1 to 4; 0 for any other.
constexpr int byteChannels(QAVPixelImageFormat format) noexcept {
  return format >= L8 && format <= RGBA8888 ? static_cast<int>(format) + 1 : 0;
}

/// The writable pixels of `image`. Asks for the buffer only when the format has one.
inline PixelSpan writablePixels(QAVPixelImage& image) {
  PixelSpan span;
  span.format = image.GetFormat();
  span.channels = byteChannels(span.format);
  if (span.channels == 0) return span;
  span.bytes = image.GetPixelsToModify();
  image.GetSize(span.width, span.height);
  if (span.width > 0 && span.height > 0)
    span.pixels = static_cast<std::size_t>(span.width) * static_cast<std::size_t>(span.height);
  return span;
}

}  // namespace qav
