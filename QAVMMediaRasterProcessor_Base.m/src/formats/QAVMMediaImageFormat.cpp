#include <QAVMMediaImageFormat.h>

#include <algorithm>
#include <limits>

namespace {

constexpr std::int64_t kBookkeepingBytes = 136;

std::int64_t runBytes(const QAVPixelImage& image, int height) {
  std::int64_t bytes = kBookkeepingBytes;
  for (int row = 0; row < height; ++row) bytes += image.GetPixelsRunsLength(row);
  return bytes;
}

}  // namespace

int QAVMMediaImageGetBitPerPixel(QAVMMediaImagePixelFormat f) noexcept {
  constexpr unsigned char bits[22] = {1,  8,  16, 24, 32, 16, 16, 16, 16, 16, 16,
                                      16, 16, 16, 16, 16, 16, 16, 24, 32, 32, 32};
  const auto index = static_cast<std::uint32_t>(f);
  return index < 22 ? bits[index] : 0;
}

QAVMMediaImagePixelFormat QAVMMediaImageGetPixelFormat(QAVPixelImageFormat f) noexcept {
  switch (f) {
    case L8:
      return QAVMMediaImageL8;
    case LA88:
      return QAVMMediaImageLA88;
    case RGB888:
      return QAVMMediaImageRGB888;
    case RGBA8888:
      return QAVMMediaImageRGBA8888;
    case BitonalRuns:
      return QAVMMediaImageBitonal;
    default:
      return QAVMMediaImageUnknown;
  }
}

int QAVMMediaImageGetBitmapSize(const QAVPixelImage& image) {
  int width = 0;
  int height = 0;
  image.GetSize(width, height);
  const QAVPixelImageFormat format = image.GetFormat();
  std::int64_t bytes = kBookkeepingBytes;
  if (format >= L8 && format <= RGBA8888) {
    const std::int64_t pixels = std::int64_t{width} * height;
    if (__builtin_mul_overflow(pixels, image.GetBytesPerPixel(), &bytes)) return std::numeric_limits<int>::max();
  } else if (format == BitonalRuns) {
    bytes = runBytes(image, height);
  }
  return static_cast<int>(
      std::clamp<std::int64_t>(bytes, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}
