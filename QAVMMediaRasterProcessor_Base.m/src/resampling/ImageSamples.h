#pragma once

#include <QAVPixelImage.h>

#include "formats/PixelSpan.h"

#include <cstddef>

namespace qav {

/// The samples of an image with their extent, so that no access need leave them.
template <class Sample>
struct ImageSamples {
  Sample* data = nullptr;
  std::size_t count = 0;
  std::size_t width = 0;
  std::size_t height = 0;
  std::size_t rowStride = 0;  ///< samples from one row to the next
};

template <class Sample>
ImageSamples<Sample> describeSamples(const QAVPixelImage& image, Sample* data, int channels) {
  ImageSamples<Sample> samples;
  int width = 0, height = 0;
  image.GetSize(width, height);
  if (!data || width < 0 || height < 0) return samples;
  samples.data = data;
  samples.width = static_cast<std::size_t>(width);
  samples.height = static_cast<std::size_t>(height);
  samples.rowStride = samples.width * static_cast<std::size_t>(channels);
  samples.count = samples.rowStride * samples.height;
  return samples;
}

/// The byte buffer of an image, formats `L8` to `RGBA8888`; no data for any other.
inline ImageSamples<unsigned char> byteBuffer(QAVPixelImage& image) {
  const int channels = byteChannels(image.GetFormat());
  return describeSamples(image, channels > 0 ? image.GetPixelsToModify() : nullptr, channels);
}

/// The bytes that an image's rows can be reached in: `RGB888` and `RGBA8888` alone.
inline ImageSamples<unsigned char> byteRows(QAVPixelImage& image) {
  const QAVPixelImageFormat format = image.GetFormat();
  return format == RGB888 || format == RGBA8888 ? byteBuffer(image) : ImageSamples<unsigned char>();
}

inline int floatChannels(QAVPixelImageFormat format) noexcept {
  return format == RGBFloat ? 3 : format == RGBAFloat ? 4 : 0;
}

inline ImageSamples<float> floatRows(QAVPixelImage& image) {
  return describeSamples(image, image.GetFloatingRow(0), floatChannels(image.GetFormat()));
}

inline ImageSamples<float> floatBuffer(QAVPixelImage& image) {
  return describeSamples(image, image.GetFloatingPixelsToModify(), floatChannels(image.GetFormat()));
}

}  // namespace qav
