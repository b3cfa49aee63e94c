#pragma once

#include <QAVPixelImageFormat.h>

#include <cstddef>
#include <limits>
#include <new>

/// How many channels of which size the pixels of a format have; zeros for formats without pixel buffers.
struct PixelLayout {
  int channels = 0;
  int bytesPerChannel = 0;
  bool hasAlpha = false;

  int bytesPerPixel() const noexcept { return channels * bytesPerChannel; }
};

constexpr PixelLayout pixelLayoutOf(QAVPixelImageFormat format) noexcept {
  switch (format) {
    case L8:
      return {1, 1, false};
    case LA88:
      return {2, 1, true};
    case RGB888:
      return {3, 1, false};
    case RGBA8888:
      return {4, 1, true};
    case RGBFloat:
      return {3, 4, false};
    case RGBAFloat:
      return {4, 4, true};
    case RGB161616:
      return {3, 2, false};
    case RGBA16161616:
      return {4, 2, true};
    default:
      return {};
  }
}

/// Bytes that width x height pixels of `format` take. Throws std::bad_alloc for a size that cannot be held.
inline std::size_t pixelBytes(int width, int height, QAVPixelImageFormat format) {
  if (width < 0 || height < 0) throw std::bad_alloc();
  const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const auto bytes = static_cast<std::size_t>(pixelLayoutOf(format).bytesPerPixel());
  const auto most = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
  if (bytes > 0 && pixels > most / bytes) throw std::bad_alloc();
  return pixels * bytes;
}
