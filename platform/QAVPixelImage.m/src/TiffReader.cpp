#include "BitonalRows.h"
#include "ImageFiles.h"
#include "TiffFile.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

namespace {

struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t bits = 1;
  std::uint16_t samples = 1;
  std::uint16_t sampleFormat = SAMPLEFORMAT_UINT;
  std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  std::uint16_t planes = PLANARCONFIG_CONTIG;
  std::uint16_t compression = COMPRESSION_NONE;
  bool associatedAlpha = false;  ///< colours are multiplied by alpha

  bool IsGrey() const { return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE; }
  bool IsBilevel() const { return IsGrey() && bits == 1 && samples == 1; }
  bool IsFax() const {
    return compression == COMPRESSION_CCITTRLE || compression == COMPRESSION_CCITTRLEW ||
           compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
  }
  bool IsJpeg() const { return compression == COMPRESSION_JPEG || compression == COMPRESSION_OJPEG; }
};

Picture describe(TIFF* tiff) {
  Picture picture;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &picture.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &picture.height);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &picture.bits);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &picture.samples);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &picture.sampleFormat);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &picture.planes);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &picture.compression);
  if (!TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &picture.photometric) && picture.samples >= 3)
    picture.photometric = PHOTOMETRIC_RGB;
  std::uint16_t extras = 0, *kinds = nullptr;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extras, &kinds);
  picture.associatedAlpha = extras > 0 && kinds[0] == EXTRASAMPLE_ASSOCALPHA;
  return picture;
}

// Blank rows of fax data take a bit each whatever their width; the decoder keeps 16 bytes for a pixel of a row.
bool isPlausibleFax(const Picture& picture, std::uint64_t fileBytes) {
  const std::uint64_t width = picture.width, height = picture.height;
  if (width == 0 || height == 0 || width > 65536 + 64 * fileBytes || height > 8 * fileBytes) return false;
  return width <= 0x7FFFFFFF && height <= 0x7FFFFFFF && width * height / 8 <= 65536 * fileBytes;
}

bool isPlausible(const Picture& picture, std::uint64_t fileBytes) {
  if (picture.bits == 0 || picture.bits > 64 || picture.samples == 0) return false;
  if (picture.IsFax()) return picture.IsBilevel() && isPlausibleFax(picture, fileBytes);
  const std::uint64_t bits = std::uint64_t{picture.bits} * picture.samples;
  if (!isPlausiblePicture(picture.width, picture.height, bits, fileBytes)) return false;
  // Colour differences may be stored at half resolution; everything else that is not compressed has all its bits.
  return picture.compression != COMPRESSION_NONE || picture.photometric == PHOTOMETRIC_YCBCR ||
         std::uint64_t{picture.width} * picture.height <= fileBytes * 8 / bits + 1;
}

// The format that holds the file's samples as they are; NoPixelStorage when they need converting.
QAVPixelImageFormat formatOfSamples(const Picture& picture) {
  if (picture.planes != PLANARCONFIG_CONTIG && picture.samples > 1) return NoPixelStorage;
  const bool integers = picture.sampleFormat == SAMPLEFORMAT_UINT;
  if (picture.photometric == PHOTOMETRIC_MINISBLACK && picture.bits == 8 && integers && picture.samples <= 2)
    return picture.samples == 1 ? L8 : LA88;
  if (picture.photometric != PHOTOMETRIC_RGB || (picture.samples != 3 && picture.samples != 4)) return NoPixelStorage;
  const bool alpha = picture.samples == 4;
  if (picture.bits == 8 && integers) return alpha ? RGBA8888 : RGB888;
  if (picture.bits == 16 && integers) return alpha ? RGBA16161616 : RGB161616;
  const bool floating = picture.bits == 32 && picture.sampleFormat == SAMPLEFORMAT_IEEEFP;
  if (floating) return alpha ? RGBAFloat : RGBFloat;
  return NoPixelStorage;
}

bool readStrips(TIFF* tiff, const Picture& picture, unsigned char* out, std::size_t stride) {
  std::uint32_t rowsPerStrip = 0;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
  if (rowsPerStrip == 0 || TIFFScanlineSize64(tiff) != stride) return false;
  for (std::uint32_t row = 0, rows; row < picture.height; row += rows, out += rows * stride) {
    rows = std::min(rowsPerStrip, picture.height - row);
    const auto bytes = static_cast<tmsize_t>(rows * stride);
    if (TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, row, 0), out, bytes) != bytes) return false;
  }
  return true;
}

bool readTiles(TIFF* tiff, const Picture& picture, unsigned char* out, std::size_t bytesPerPixel,
               std::uint64_t fileBytes) {
  std::uint32_t tileWidth = 0, tileHeight = 0;
  TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &tileWidth);
  TIFFGetField(tiff, TIFFTAG_TILELENGTH, &tileHeight);
  const std::uint64_t tileStride = std::uint64_t{tileWidth} * bytesPerPixel;
  if (!isPlausiblePicture(tileWidth, tileHeight, bytesPerPixel * 8, fileBytes)) return false;
  if (TIFFTileSize64(tiff) != tileStride * tileHeight) return false;
  std::vector<unsigned char> tile(tileStride * tileHeight);
  const std::size_t stride = picture.width * bytesPerPixel;
  for (std::uint32_t y = 0; y < picture.height; y += std::min(tileHeight, picture.height - y)) {
    for (std::uint32_t x = 0; x < picture.width; x += std::min(tileWidth, picture.width - x)) {
      const auto bytes = static_cast<tmsize_t>(tile.size());
      if (TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, 0), tile.data(), bytes) != bytes) return false;
      const std::uint32_t rows = std::min(tileHeight, picture.height - y);
      const std::size_t rowBytes = std::min(tileWidth, picture.width - x) * bytesPerPixel;
      for (std::size_t row = 0; row < rows; ++row)
        std::memcpy(out + (y + row) * stride + x * bytesPerPixel, tile.data() + row * tileStride, rowBytes);
    }
  }
  return true;
}

template <class T>
void divideByAlpha(T* pixels, std::size_t count, int channels) {
  for (std::size_t i = 0; i < count; ++i, pixels += channels) {
    const T alpha = pixels[channels - 1];
    for (int c = 0; c < channels - 1 && alpha > 0; ++c) {
      if constexpr (std::is_floating_point_v<T>) {
        pixels[c] /= alpha;
      } else {
        constexpr std::uint32_t kFull = std::numeric_limits<T>::max();
        pixels[c] = static_cast<T>(std::min((pixels[c] * kFull + alpha / 2u) / alpha, kFull));
      }
    }
  }
}

void separateAlpha(QAVPixelImage& image) {
  const std::size_t count = sizeOf(image).pixels();
  if (image.GetFormat() == LA88) divideByAlpha(image.GetPixelsToModify(), count, 2);
  if (image.GetFormat() == RGBA8888) divideByAlpha(image.GetPixelsToModify(), count, 4);
  if (image.GetFormat() == RGBA16161616) divideByAlpha(image.GetSixteenBitPixelsToModify(), count, 4);
  if (image.GetFormat() == RGBAFloat) divideByAlpha(image.GetFloatingPixelsToModify(), count, 4);
}

ImagePtr readSamples(TIFF* tiff, const Picture& picture, QAVPixelImageFormat format, std::uint64_t fileBytes) {
  // Zeroed: of damaged deflate data libtiff may accept a strip that it has not filled to the end.
  ImagePtr image(new QAVPixelImage(static_cast<int>(picture.width), static_cast<int>(picture.height), format));
  const auto bytesPerPixel = static_cast<std::size_t>(image->GetBytesPerPixel());
  unsigned char* const pixels = pixelsToModify(*image);
  const bool complete = TIFFIsTiled(tiff) ? readTiles(tiff, picture, pixels, bytesPerPixel, fileBytes)
                                          : readStrips(tiff, picture, pixels, picture.width * bytesPerPixel);
  if (!complete) return nullptr;
  if (picture.associatedAlpha) separateAlpha(*image);
  return image;
}

ImagePtr readBilevelRows(TIFF* tiff, const Picture& picture) {
  const int width = static_cast<int>(picture.width), height = static_cast<int>(picture.height);
  ImagePtr image(new QAVPixelImage(width, height, BitonalRuns));
  BitonalRows rows(width);
  if (TIFFScanlineSize64(tiff) != rows.BitmapBytes()) return nullptr;
  for (int y = 0; y < height; ++y) {
    if (TIFFReadScanline(tiff, rows.Bitmap(), static_cast<std::uint32_t>(y)) != 1) return nullptr;
    if (picture.photometric == PHOTOMETRIC_MINISBLACK)
      std::transform(rows.Bitmap(), rows.Bitmap() + rows.BitmapBytes(), rows.Bitmap(), [](int byte) { return ~byte; });
    rows.Store(*image, y);
  }
  return image;
}

// What libtiff turns into 8-bit RGBA with alpha multiplied in: palettes, other depths, CMYK, separate planes, ...
ImagePtr readThroughRgba(TIFF* tiff, const Picture& picture) {
  char message[1024];
  if (!TIFFRGBAImageOK(tiff, message)) return nullptr;
  ImagePtr image = makeUnfilledImage(static_cast<int>(picture.width), static_cast<int>(picture.height), RGBA8888);
  std::uint16_t orientation = ORIENTATION_TOPLEFT, extras = 0, *kinds = nullptr;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &orientation);  // the same out as in: rows stay in the file's order
  unsigned char* const pixels = image->GetPixelsToModify();
  auto* const packed = reinterpret_cast<std::uint32_t*>(pixels);
  if (!TIFFReadRGBAImageOriented(tiff, picture.width, picture.height, packed, orientation, 1)) return nullptr;
  for (std::size_t i = 0; i < sizeOf(*image).pixels(); ++i) {
    const std::uint32_t abgr = packed[i];
    for (int c = 0; c < 4; ++c)
      pixels[4 * i + static_cast<std::size_t>(c)] = static_cast<unsigned char>(abgr >> (8 * c));
  }
  TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &extras, &kinds);
  if (extras > 0) separateAlpha(*image);
  QAVPixelImageFormat format = extras > 0 ? RGBA8888 : RGB888;
  if (picture.IsGrey()) format = extras > 0 ? LA88 : L8;
  if (picture.IsBilevel()) format = BitonalRuns;
  return FAILED(image->ConvertToFormat(format)) ? nullptr : std::move(image);
}

}  // namespace

ImagePtr readTiff(InputFile& file) {
  TiffLog log;
  const std::uint64_t largestAllocation = 2048 * file.bytes + (1 << 20);
  const TiffPtr tiff = openTiff(file.stream.get(), "rm", largestAllocation, log);
  if (!tiff) return nullptr;
  const Picture picture = describe(tiff.get());
  if (!isPlausible(picture, file.bytes)) return nullptr;
  log = {false, picture.IsFax() || picture.IsJpeg()};
  const QAVPixelImageFormat format = formatOfSamples(picture);
  ImagePtr image;
  if (picture.IsBilevel() && !TIFFIsTiled(tiff.get()))
    image = readBilevelRows(tiff.get(), picture);
  else if (format != NoPixelStorage)
    image = readSamples(tiff.get(), picture, format, file.bytes);
  else
    image = readThroughRgba(tiff.get(), picture);
  return log.failed ? nullptr : std::move(image);
}
