#include "resampling/ImagePasses.h"

#include "resampling/DirectPasses.h"
#include "resampling/StripPasses.h"
#include "resampling/WeightRuns.h"

#include "PixelLayout.h"
#include "PixelMemory.h"

#include <QAVMMWeightsTable.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>

namespace qav {
namespace {

enum class SampleKind { None, Bit, Byte, Float };

SampleKind sampleKindOf(QAVPixelImage& image) {
  const QAVPixelImageFormat format = image.GetFormat();
  if (format == RGBFloat || format == RGBAFloat) return SampleKind::Float;
  if (format != L8 && format != RGB888 && format != RGBA8888 && format != BitonalRuns) return SampleKind::None;
  switch (image.GetBitsPerPixel()) {
    case 1:
      return SampleKind::Bit;
    case 8:
    case 24:
    case 32:
      return SampleKind::Byte;
    default:
      return SampleKind::None;
  }
}

// Whether the sizes given to a pass are those of its buffers, and the buffers lie apart.
template <class Sample>
bool fits(const ImageSamples<Sample>& source, const ImageSamples<Sample>& target, int channels,
          const PassSizes& sizes) {
  const auto isOf = [=](const ImageSamples<Sample>& samples, std::uint32_t width, std::uint32_t height) {
    return samples.width == width && samples.height == height && samples.count > 0 &&
           samples.rowStride == samples.width * static_cast<std::size_t>(channels);
  };
  const std::less_equal<const Sample*> before;
  return channels >= 3 && isOf(source, sizes.sourceWidth, sizes.sourceHeight) &&
         isOf(target, sizes.width, sizes.height) &&
         (before(source.data + source.count, target.data) || before(target.data + target.count, source.data));
}

template <class Sample>
StripJob<Sample> jobOf(const ImageSamples<Sample>& source, const ImageSamples<Sample>& target, int channels) {
  return {source.data, source.width, source.height, target.data, target.width, target.height, channels, {}, {}, false};
}

std::span<const QAVMMContribution> entriesOf(const QAVMMWeightsTable& table) {
  return {table.contributions, static_cast<std::size_t>(std::max(0, table.count))};
}

template <class Sample>
void resampleRowsOf(const ImageSamples<Sample>& source, const ImageSamples<Sample>& target, int channels,
                    const PassSizes& sizes, const QAVMMWeightsTable& table) {
  if (!source.data || !target.data || channels < 1 || channels > 4) return;
  if (!fits(source, target, channels, sizes) || sizes.sourceHeight != sizes.height)
    return resampleRowsDirectly(source, target, channels, sizes, table);
  StripJob<Sample> job = jobOf(source, target, channels);
  job.horizontal = entriesOf(table);
  resampleInStrips(job);
}

template <class Sample>
void resampleColumnsOf(const ImageSamples<Sample>& source, const ImageSamples<Sample>& target, int channels,
                       const PassSizes& sizes, const QAVMMWeightsTable& table) {
  if (!source.data || !target.data || channels < 1 || channels > 4) return;
  if (!fits(source, target, channels, sizes) || sizes.sourceWidth != sizes.width)
    return resampleColumnsDirectly(source, target, channels, sizes, table);
  StripJob<Sample> job = jobOf(source, target, channels);
  job.vertical = entriesOf(table);
  resampleInStrips(job);
}

// The buffer of a new image, not zeroed, as every sample will be written.
Owned<QAVPixelImage> newImageToFill(int width, int height, QAVPixelImageFormat format) {
  std::unique_ptr<unsigned char[]> pixels(newPixelBuffer(pixelBytes(width, height, format)));
  Owned<QAVPixelImage> image(new QAVPixelImage(width, height, format, pixels.get(), QAVDeallocatePixelsByImage));
  pixels.release();
  return image;
}

// The weights of both directions, made in the order of the passes. None for a direction that keeps its size.
struct BothWeights {
  BothWeights(const PassSizes& sizes, QAVMMGenericFilter* filter, bool verticalFirst) {
    if (verticalFirst) make(vertical, filter, sizes.height, sizes.sourceHeight);
    make(horizontal, filter, sizes.width, sizes.sourceWidth);
    if (!verticalFirst) make(vertical, filter, sizes.height, sizes.sourceHeight);
  }
  static void make(std::optional<WeightRuns>& runs, QAVMMGenericFilter* filter, std::uint32_t size,
                   std::uint32_t sourceSize) {
    if (size != sourceSize) runs.emplace(filter, static_cast<int>(size), static_cast<int>(sourceSize));
  }
  template <class Sample>
  void fillIn(StripJob<Sample>& job) const {
    if (horizontal) job.horizontal = horizontal->entries;
    if (vertical) job.vertical = vertical->entries;
  }

  std::optional<WeightRuns> horizontal;
  std::optional<WeightRuns> vertical;
};

template <class Sample>
ImageSamples<Sample> bufferOf(QAVPixelImage& image) {
  if constexpr (std::is_same_v<Sample, float>)
    return floatBuffer(image);
  else
    return byteBuffer(image);
}

template <class Sample>
Owned<QAVPixelImage> scaleSamples(const ImageSamples<Sample>& source, const Sample* readable, int channels,
                                  QAVPixelImageFormat format, const PassSizes& sizes, QAVMMGenericFilter* filter,
                                  bool verticalFirst) {
  if (!source.data || source.data != readable || source.count == 0 || channels < 3) return nullptr;
  Owned<QAVPixelImage> result = newImageToFill(static_cast<int>(sizes.width), static_cast<int>(sizes.height), format);
  const BothWeights weights(sizes, filter, verticalFirst);
  StripJob<Sample> job = jobOf(source, bufferOf<Sample>(*result), channels);
  job.verticalFirst = verticalFirst;
  weights.fillIn(job);
  resampleInStrips(job);
  return result;
}

}  // namespace

void resampleRows(QAVPixelImage& src, QAVPixelImage& dst, const PassSizes& sizes, const QAVMMWeightsTable& table) {
  switch (sampleKindOf(src)) {
    case SampleKind::Float:
      return resampleRowsOf(floatRows(src), floatRows(dst), src.GetBytesPerPixel() / 4, sizes, table);
    case SampleKind::Byte:
      return resampleRowsOf(byteRows(src), byteRows(dst), src.GetBytesPerPixel(), sizes, table);
    case SampleKind::Bit: {
      const auto source = byteRows(src), target = byteRows(dst);
      if (dst.GetBytesPerPixel() == 8 && source.data && target.data)
        expandBitRowsDirectly(source, target, sizes, table);
      return;
    }
    case SampleKind::None:
      return;
  }
}

void resampleColumns(QAVPixelImage& src, QAVPixelImage& dst, const PassSizes& sizes, const QAVMMWeightsTable& table) {
  const SampleKind kind = sampleKindOf(src);
  if (kind == SampleKind::Float)
    resampleColumnsOf(floatRows(src), floatBuffer(dst), src.GetBytesPerPixel() / 4, sizes, table);
  else if (kind == SampleKind::Byte)
    resampleColumnsOf(byteRows(src), byteBuffer(dst), src.GetBytesPerPixel(), sizes, table);
}

Owned<QAVPixelImage> scaleAtOnce(QAVPixelImage& src, const PassSizes& sizes, QAVMMGenericFilter* filter,
                                 bool verticalFirst) {
  const bool copies = sizes.width == sizes.sourceWidth && sizes.height == sizes.sourceHeight;
  if (copies || sizes.width == 0 || sizes.height == 0) return nullptr;
  const QAVPixelImageFormat format = src.GetFormat();
  const SampleKind kind = sampleKindOf(src);
  if (kind == SampleKind::Byte && src.GetBytesPerPixel() == byteChannels(format))
    return scaleSamples<unsigned char>(byteRows(src), src.GetPixelsToRead(), byteChannels(format), format, sizes,
                                       filter, verticalFirst);
  if (kind == SampleKind::Float && src.GetBytesPerPixel() == 4 * floatChannels(format))
    return scaleSamples<float>(floatRows(src), src.GetFloatingPixelsToRead(), floatChannels(format), format, sizes,
                               filter, verticalFirst);
  return nullptr;
}

}  // namespace qav
