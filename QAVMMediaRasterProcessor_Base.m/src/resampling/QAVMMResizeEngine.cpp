#include <QAVMMResizeEngine.h>

#include "resampling/DirectPasses.h"
#include "resampling/Owned.h"

#include <QAVCheck.h>
#include <QAVMMPIPixelColorSpec.h>
#include <QAVMMWeightsTable.h>

#include <algorithm>
#include <cstring>

using qav::ImageSamples;
using qav::PassSizes;

namespace {

constexpr const char* kModule = "QAVMMediaRasterProcessor_Base.m/src/QAVMMResizeEngine";

using OwnedImage = qav::Owned<QAVPixelImage>;

OwnedImage newImage(std::uint32_t width, std::uint32_t height, QAVPixelImageFormat format) {
  return OwnedImage(new QAVPixelImage(static_cast<int>(width), static_cast<int>(height), format));
}

// Lines of the reports of missing buffers when a pass copies; callers' logs know them by these.
struct CopyReportLines {
  int floatSource;
  int floatTarget;
  int byteSource;
  int byteTarget;
};
constexpr CopyReportLines kHorizontalLines = {167, 168, 173, 174};
constexpr CopyReportLines kVerticalLines = {323, 324, 329, 330};

bool present(const void* pointer, const char* expression, int line) {
  if (!pointer) Check_Pointer_Failed__(expression, kModule, line, nullptr);
  return pointer != nullptr;
}

template <class Sample>
void copySamples(const Sample* from, const ImageSamples<Sample>& to, const QAVPixelImage& source,
                 const PassSizes& sizes, int channels) {
  const std::size_t available = qav::describeSamples(source, from, channels).count;
  const std::uint64_t pixels = std::uint64_t{sizes.width} * sizes.height;
  const std::size_t most = std::min(available, to.count);
  const std::size_t wanted = std::min<std::uint64_t>(pixels, most) * static_cast<std::size_t>(channels);
  if (most > 0) std::memmove(to.data, from, std::min(most, wanted) * sizeof(Sample));
}

void copyPixels(QAVPixelImage& src, QAVPixelImage& dst, const PassSizes& sizes, const CopyReportLines& lines) {
  const QAVPixelImageFormat format = src.GetFormat();
  if (QAVMMPIPixelColorSpec::UsingFloatFormat(format)) {
    const float* const from = src.GetFloatingPixelsToRead();
    if (!present(from, "src->GetFloatingPixelsToRead()", lines.floatSource)) return;
    if (!present(dst.GetFloatingPixelsToModify(), "dst->GetFloatingPixelsToModify()", lines.floatTarget)) return;
    copySamples(from, qav::floatBuffer(dst), src, sizes, qav::floatChannels(format));
  } else if (QAVMMPIPixelColorSpec::UsingBaseFormat(format)) {
    const unsigned char* const from = src.GetPixelsToRead();
    if (!present(from, "src->GetPixelsToRead()", lines.byteSource)) return;
    if (!present(dst.GetPixelsToModify(), "dst->GetPixelsToModify()", lines.byteTarget)) return;
    copySamples(from, qav::byteBuffer(dst), src, sizes, qav::byteChannels(format));
  }
}

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

bool holdsChannels(int channels) { return channels >= 1 && channels <= 4; }

void resampleRows(QAVPixelImage& src, QAVPixelImage& dst, const PassSizes& sizes, const QAVMMWeightsTable& table) {
  const SampleKind kind = sampleKindOf(src);
  if (kind == SampleKind::Float) {
    const auto source = qav::floatRows(src), target = qav::floatRows(dst);
    const int channels = src.GetBytesPerPixel() / 4;
    if (source.data && target.data && holdsChannels(channels))
      resampleRowsDirectly(source, target, channels, sizes, table);
    return;
  }
  if (kind == SampleKind::None || (kind == SampleKind::Bit && dst.GetBytesPerPixel() != 8)) return;
  const auto source = qav::byteRows(src), target = qav::byteRows(dst);
  if (!source.data || !target.data) return;
  const int channels = src.GetBytesPerPixel();
  if (kind == SampleKind::Bit)
    expandBitRowsDirectly(source, target, sizes, table);
  else if (holdsChannels(channels))
    resampleRowsDirectly(source, target, channels, sizes, table);
}

void resampleColumns(QAVPixelImage& src, QAVPixelImage& dst, const PassSizes& sizes, const QAVMMWeightsTable& table) {
  const SampleKind kind = sampleKindOf(src);
  if (kind == SampleKind::Float) {
    const auto source = qav::floatRows(src), target = qav::floatBuffer(dst);
    const int channels = src.GetBytesPerPixel() / 4;
    if (source.data && target.data && holdsChannels(channels))
      resampleColumnsDirectly(source, target, channels, sizes, table);
  } else if (kind == SampleKind::Byte) {
    const auto source = qav::byteRows(src), target = qav::byteBuffer(dst);
    const int channels = src.GetBytesPerPixel();
    if (source.data && target.data && holdsChannels(channels))
      resampleColumnsDirectly(source, target, channels, sizes, table);
  }
}

}  // namespace

bool QAVMMResizeEngine::__DoesResizeSupportFormat(QAVPixelImageFormat format) {
  const auto number = static_cast<std::uint32_t>(format);
  return number <= 11 && (0xC0Du >> number & 1u);
}

QAVPixelImage* QAVMMResizeEngine::scale(QAVPixelImage* src, unsigned int width, unsigned int height) {
  if (!present(src, "src", 77) || !present(src->getSpec(), "src->getSpec()", 78)) return nullptr;
  if (!__DoesResizeSupportFormat(src->GetFormat())) {
    Check_TRUE_Failed__("__DoesResizeSupportFormat(src->GetFormat())", kModule, 79, nullptr);
    return nullptr;
  }
  int w = 0, h = 0;
  src->GetSize(w, h);
  const auto srcWidth = static_cast<std::uint32_t>(w), srcHeight = static_cast<std::uint32_t>(h);
  const QAVPixelImageFormat format = src->GetFormat();
  if (src->GetBytesPerPixel() == 1) return nullptr;
  OwnedImage result = newImage(width, height, format);
  // Both products wrap at 2^32.
  if (srcHeight * width > srcWidth * height) {
    const OwnedImage between = newImage(srcWidth, height, format);
    verticalFilter(src, srcWidth, srcHeight, between.get(), srcWidth, height);
    horizontalFilter(between.get(), srcWidth, height, result.get(), width, height);
  } else {
    const OwnedImage between = newImage(width, srcHeight, format);
    horizontalFilter(src, srcWidth, srcHeight, between.get(), width, srcHeight);
    verticalFilter(between.get(), width, srcHeight, result.get(), width, height);
  }
  return result.release();
}

void QAVMMResizeEngine::horizontalFilter(QAVPixelImage* src, unsigned int srcWidth, unsigned int srcHeight,
                                         QAVPixelImage* dst, unsigned int dstWidth, unsigned int dstHeight) {
  if (!src || !dst) return;
  const PassSizes sizes = {srcWidth, srcHeight, dstWidth, dstHeight};
  if (dstWidth == srcWidth && dstHeight == srcHeight) return copyPixels(*src, *dst, sizes, kHorizontalLines);
  resampleRows(*src, *dst, sizes, {filter, static_cast<int>(dstWidth), static_cast<int>(srcWidth)});
}

void QAVMMResizeEngine::verticalFilter(QAVPixelImage* src, unsigned int srcWidth, unsigned int srcHeight,
                                       QAVPixelImage* dst, unsigned int dstWidth, unsigned int dstHeight) {
  if (!src || !dst) return;
  const PassSizes sizes = {srcWidth, srcHeight, dstWidth, dstHeight};
  if (dstWidth == srcWidth && dstHeight == srcHeight) return copyPixels(*src, *dst, sizes, kVerticalLines);
  resampleColumns(*src, *dst, sizes, {filter, static_cast<int>(dstHeight), static_cast<int>(srcHeight)});
}
