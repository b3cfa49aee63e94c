#include <QAVMMResizeEngine.h>

#include "resampling/ImagePasses.h"
#include "resampling/ImageSamples.h"

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
  // Both products wrap at 2^32.
  const bool verticalFirst = srcHeight * width > srcWidth * height;
  if (OwnedImage result = qav::scaleAtOnce(*src, {srcWidth, srcHeight, width, height}, filter, verticalFirst))
    return result.release();
  OwnedImage result = newImage(width, height, format);
  if (verticalFirst) {
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
