#include "BitonalRows.h"
#include "ImageFiles.h"
#include "PixelLayout.h"
#include "TiffFile.h"

#include <algorithm>

namespace {

void setCommonFields(TIFF* tiff, const ImageSize& size, int bits, int samples) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
}

bool writeBilevel(TIFF* tiff, const QAVPixelImage& image) {
  const ImageSize size = sizeOf(image);
  setCommonFields(tiff, size, 1, 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, size.height);
  BitonalRows rows(size.width);
  for (int y = 0; y < size.height; ++y)
    if (TIFFWriteScanline(tiff, rows.Read(image, y), static_cast<std::uint32_t>(y)) != 1) return false;
  return true;
}

void setSampleFields(TIFF* tiff, const ImageSize& size, PixelLayout layout) {
  setCommonFields(tiff, size, 8 * layout.bytesPerChannel, layout.channels);
  const bool floating = layout.bytesPerChannel == 4;
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, layout.channels <= 2 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, floating ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
  constexpr std::uint16_t kAlpha[] = {EXTRASAMPLE_UNASSALPHA};
  if (layout.hasAlpha) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, kAlpha);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
  TIFFSetField(tiff, TIFFTAG_PREDICTOR, floating ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL);
}

bool writeSamples(TIFF* tiff, const QAVPixelImage& image) {
  const ImageSize size = sizeOf(image);
  const PixelLayout layout = pixelLayoutOf(image.GetFormat());
  setSampleFields(tiff, size, layout);
  const std::size_t stride = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(layout.bytesPerPixel());
  const int rowsPerStrip = static_cast<int>(std::clamp<std::size_t>((256 << 10) / stride, 1, 1 << 20));
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
  const unsigned char* pixels = pixelsToRead(image);
  std::uint32_t strip = 0;
  for (std::size_t left = static_cast<std::size_t>(size.height), rows; left > 0; left -= rows, ++strip) {
    rows = std::min(left, static_cast<std::size_t>(rowsPerStrip));
    const auto bytes = static_cast<tmsize_t>(rows * stride);
    if (TIFFWriteEncodedStrip(tiff, strip, const_cast<unsigned char*>(pixels), bytes) != bytes) return false;
    pixels += rows * stride;
  }
  return true;
}

// Offsets of the classic file have 32 bits; a quarter is kept for what does not compress.
const char* modeFor(const QAVPixelImage& image) {
  const std::size_t bytes = sizeOf(image).pixels() * static_cast<std::size_t>(std::max(1, image.GetBytesPerPixel()));
  return bytes > (std::size_t{3} << 30) ? "w8" : "w";
}

}  // namespace

bool writeTiff(std::FILE* file, const QAVPixelImage& image) {
  TiffLog log;
  const TiffPtr tiff = openTiff(file, modeFor(image), 0, log);
  if (!tiff) return false;
  const bool written =
      image.GetFormat() == BitonalRuns ? writeBilevel(tiff.get(), image) : writeSamples(tiff.get(), image);
  return written && TIFFFlush(tiff.get()) == 1 && !log.failed;
}
