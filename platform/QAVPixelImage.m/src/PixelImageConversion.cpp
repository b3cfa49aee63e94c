#include "BitonalRows.h"
#include "PixelAccess.h"
#include "PixelConversion.h"
#include "PixelLayout.h"

#include <QAVPixelImage.h>

namespace {

ImagePtr expandBitonal(const QAVPixelImage& source, QAVPixelImageFormat format) {
  const ImageSize size = sizeOf(source);
  ImagePtr result = makeUnfilledImage(size.width, size.height, format);
  unsigned char* out = pixelsToModify(*result);
  const auto width = static_cast<std::size_t>(size.width);
  const std::size_t stride = width * static_cast<std::size_t>(result->GetBytesPerPixel());
  std::vector<unsigned char> luminance(format == L8 ? 0 : width);
  for (int row = 0; row < size.height; ++row, out += stride) {
    readBitonalRow(source, row, size.width, format == L8 ? out : luminance.data());
    if (format != L8) convertPixels(L8, luminance.data(), format, out, width);
  }
  return result;
}

ImagePtr reduceToBitonal(const QAVPixelImage& source) {
  const ImageSize size = sizeOf(source);
  ImagePtr result(new QAVPixelImage(size.width, size.height, BitonalRuns));
  const unsigned char* in = pixelsToRead(source);
  const auto width = static_cast<std::size_t>(size.width);
  const std::size_t stride = width * static_cast<std::size_t>(source.GetBytesPerPixel());
  const bool grey = source.GetFormat() == L8;
  std::vector<unsigned char> luminance(grey ? 0 : width);
  BitonalRows rows(size.width);
  for (int row = 0; row < size.height; ++row, in += stride) {
    if (!grey) convertPixels(source.GetFormat(), in, L8, luminance.data(), width);
    packBitonalRow(grey ? in : luminance.data(), size.width, rows.Bitmap());
    rows.Store(*result, row);
  }
  return result;
}

}  // namespace

QAVPixelImage* QAVPixelImage::CreateConvertedCopy(QAVPixelImageFormat format) {
  if (!holdsPixels(*this) || (format != BitonalRuns && pixelLayoutOf(format).channels == 0)) return nullptr;
  const QAVPixelImageFormat from = GetFormat();
  if (from == format) return new QAVPixelImage(*this);
  if (from == BitonalRuns) return expandBitonal(*this, format).release();
  if (format == BitonalRuns) return reduceToBitonal(*this).release();
  const ImageSize size = sizeOf(*this);
  ImagePtr result = makeUnfilledImage(size.width, size.height, format);
  convertPixels(from, pixelsToRead(*this), format, pixelsToModify(*result), size.pixels());
  return result.release();
}
