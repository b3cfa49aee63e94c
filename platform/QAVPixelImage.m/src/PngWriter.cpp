#include "ImageFiles.h"
#include "PixelLayout.h"
#include "PngSession.h"

#include <bit>

namespace {

void writeBytes(png_structp png, png_bytep data, std::size_t count) {
  if (std::fwrite(data, 1, count, static_cast<std::FILE*>(png_get_io_ptr(png))) != count) png_error(png, "cut short");
}
void flush(png_structp) {}

struct Rows {
  ImageSize size;
  PixelLayout layout;
  const unsigned char* pixels;
};

bool writePicture(png_structp png, png_infop info, std::FILE* file, const Rows& rows) {
  if (setjmp(png_jmpbuf(png))) return false;
  constexpr int kColourTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                  PNG_COLOR_TYPE_RGB_ALPHA};
  png_set_write_fn(png, file, writeBytes, flush);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_compression_level(png, 3);  // a third of the default level's time for a few per cent more bytes
  png_set_IHDR(png, info, static_cast<png_uint_32>(rows.size.width), static_cast<png_uint_32>(rows.size.height),
               rows.layout.bytesPerChannel * 8, kColourTypes[rows.layout.channels - 1], PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  if (std::endian::native == std::endian::little && rows.layout.bytesPerChannel == 2) png_set_swap(png);
  const std::size_t stride =
      static_cast<std::size_t>(rows.size.width) * static_cast<std::size_t>(rows.layout.bytesPerPixel());
  for (int y = 0; y < rows.size.height; ++y) png_write_row(png, rows.pixels + static_cast<std::size_t>(y) * stride);
  png_write_end(png, nullptr);
  return true;
}

}  // namespace

bool writePng(std::FILE* file, const QAVPixelImage& image) {
  const PngSession writing(PngSession::Direction::Write);
  const Rows rows{sizeOf(image), pixelLayoutOf(image.GetFormat()), pixelsToRead(image)};
  return writing.IsReady() && writePicture(writing.Png(), writing.Info(), file, rows);
}
