#include "BitonalRows.h"
#include "PixelAccess.h"
#include "PixelLayout.h"

#include <QAVPixelImage.h>

#include <algorithm>
#include <cstring>

namespace {

// The columns or rows that source and destination share, on one axis.
struct Overlap {
  Overlap(int offset, int sourceLength, int length)
      : to(std::max(offset, 0)),
        from(std::max(-std::int64_t{offset}, std::int64_t{0})),
        count(std::min(std::int64_t{offset} + sourceLength, std::int64_t{length}) - to) {}

  std::int64_t to;
  std::int64_t from;
  std::int64_t count;
};

void pasteBuffer(QAVPixelImage& image, const QAVPixelImage& source, const Overlap& x, const Overlap& y) {
  const auto bytes = static_cast<std::size_t>(image.GetBytesPerPixel());
  const std::size_t stride = static_cast<std::size_t>(sizeOf(image).width) * bytes;
  const std::size_t sourceStride = static_cast<std::size_t>(sizeOf(source).width) * bytes;
  unsigned char* to =
      pixelsToModify(image) + static_cast<std::size_t>(y.to) * stride + static_cast<std::size_t>(x.to) * bytes;
  const unsigned char* from =
      pixelsToRead(source) + static_cast<std::size_t>(y.from) * sourceStride + static_cast<std::size_t>(x.from) * bytes;
  for (std::int64_t row = 0; row < y.count; ++row, to += stride, from += sourceStride)
    std::memcpy(to, from, static_cast<std::size_t>(x.count) * bytes);
}

void pasteBits(const unsigned char* from, std::int64_t fromBit, unsigned char* to, std::int64_t toBit,
               std::int64_t count) {
  for (; count > 0; --count, ++fromBit, ++toBit) {
    const int mask = 0x80 >> (toBit % 8);
    const bool black = from[fromBit / 8] & 0x80 >> (fromBit % 8);
    to[toBit / 8] = static_cast<unsigned char>(black ? to[toBit / 8] | mask : to[toBit / 8] & ~mask);
  }
}

void pasteRuns(QAVPixelImage& image, const QAVPixelImage& source, const Overlap& x, const Overlap& y) {
  BitonalRows rows(sizeOf(image).width), sourceRows(sizeOf(source).width);
  for (int row = 0; row < y.count; ++row) {
    const unsigned char* from = sourceRows.Read(source, static_cast<int>(y.from) + row);
    pasteBits(from, x.from, rows.Read(image, static_cast<int>(y.to) + row), x.to, x.count);
    rows.Store(image, static_cast<int>(y.to) + row);
  }
}

template <class T>
void fillAlpha(T* pixels, std::size_t count, std::size_t channels, T alpha) {
  for (std::size_t i = 0; i < count; ++i) pixels[i * channels + channels - 1] = alpha;
}

}  // namespace

HRESULT QAVPixelImage::PasteImage(int x, int y, QAVPixelImage* source, int) {
  if (!source || !holdsPixels(*source) || !holdsPixels(*this)) return E_FAIL;
  const QAVPixelImageFormat format = GetFormat();
  const bool sharesPixels = source == this || (pixelsToRead(*this) && pixelsToRead(*source) == pixelsToRead(*this));
  ImagePtr converted;
  if (source->GetFormat() != format || sharesPixels) {
    converted.reset(source->CreateConvertedCopy(format));
    if (!converted) return E_FAIL;
    source = converted.get();
  }
  const ImageSize size = sizeOf(*this), sourceSize = sizeOf(*source);
  const Overlap columns(x, sourceSize.width, size.width), rows(y, sourceSize.height, size.height);
  if (columns.count <= 0 || rows.count <= 0) return S_OK;
  if (format == BitonalRuns) {
    pasteRuns(*this, *source, columns, rows);
    return S_OK;
  }
  if (!pixelsToModify(*this)) return E_FAIL;
  pasteBuffer(*this, *source, columns, rows);
  return S_OK;
}

void QAVPixelImage::SetTransparency(unsigned char alpha) {
  const PixelLayout layout = pixelLayoutOf(GetFormat());
  unsigned char* pixels = pixelsToModify(*this);
  if (!layout.hasAlpha || !pixels) return;
  const std::size_t count = sizeOf(*this).pixels();
  const auto channels = static_cast<std::size_t>(layout.channels);
  if (layout.bytesPerChannel == 1) fillAlpha(pixels, count, channels, alpha);
  if (layout.bytesPerChannel == 2)
    fillAlpha(GetSixteenBitPixelsToModify(), count, channels, static_cast<std::uint16_t>(alpha * 257));
  if (layout.bytesPerChannel == 4)
    fillAlpha(GetFloatingPixelsToModify(), count, channels, static_cast<float>(alpha) / 255.0f);
}
