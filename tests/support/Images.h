#pragma once

#include <QAVPixelImage.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace qav::test {

using Bytes = std::vector<std::uint8_t>;

inline void appendBigEndian(Bytes& bytes, std::size_t value, int count) {
  for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

struct ReleaseReference {
  void operator()(QAVBaseUnknown* object) const { object->Release(); }
};
/// An image whose one reference the test owns.
using Image = std::unique_ptr<QAVPixelImage, ReleaseReference>;

inline Image makeImage(int width, int height, QAVPixelImageFormat format) {
  return Image(new QAVPixelImage(width, height, format));
}

inline Image copyOf(const QAVPixelImage& image) { return Image(new QAVPixelImage(image)); }

inline std::pair<int, int> extentOf(const QAVPixelImage& image) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  return {width, height};
}

inline std::size_t byteCount(const QAVPixelImage& image) {
  const auto [width, height] = extentOf(image);
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
         static_cast<std::size_t>(image.GetBytesPerPixel());
}

inline std::vector<std::uint8_t> bytesOf(const QAVPixelImage& image) {
  const unsigned char* pixels = image.GetPixelsToRead();
  return pixels ? std::vector<std::uint8_t>(pixels, pixels + byteCount(image)) : std::vector<std::uint8_t>();
}

inline Image imageOf(int width, int height, QAVPixelImageFormat format, const std::vector<std::uint8_t>& bytes) {
  Image image = makeImage(width, height, format);
  for (std::size_t i = 0; i < bytes.size() && i < byteCount(*image); ++i) image->GetPixelsToModify()[i] = bytes[i];
  return image;
}

inline int below(int limit, std::mt19937& random) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

/// How the samples of a random image are drawn.
enum class Texture { Noise, Extremes, Smooth, Uniform };
inline constexpr Texture kTextures[] = {Texture::Noise, Texture::Extremes, Texture::Smooth, Texture::Uniform};

inline void fill(std::uint8_t* bytes, std::size_t count, Texture texture, std::mt19937& random) {
  auto value = static_cast<std::uint8_t>(random());
  for (std::size_t i = 0; i < count; ++i) {
    if (texture == Texture::Noise) value = static_cast<std::uint8_t>(random());
    if (texture == Texture::Extremes) value = random() & 1 ? 255 : 0;
    if (texture == Texture::Smooth) value = static_cast<std::uint8_t>(value + random() % 7 - 3);
    bytes[i] = value;
  }
}

/// Image of a byte format with random samples.
inline Image randomImage(int width, int height, QAVPixelImageFormat format, std::mt19937& random,
                         Texture texture = Texture::Noise) {
  Image image = makeImage(width, height, format);
  fill(image->GetPixelsToModify(), byteCount(*image), texture, random);
  return image;
}

/// An image that refuses to be changed.
class ReadOnlyImage : public QAVPixelImage {
 public:
  using QAVPixelImage::QAVPixelImage;
  unsigned char* GetPixelsToModify() override { return nullptr; }
};

inline constexpr QAVPixelImageFormat kByteFormats[] = {L8, LA88, RGB888, RGBA8888};
inline constexpr QAVPixelImageFormat kAllFormats[] = {
    L8, LA88, RGB888, RGBA8888, BitonalRuns, NoPixelStorage, RGBFloat, RGBAFloat, RGB161616, RGBA16161616};

}  // namespace qav::test
