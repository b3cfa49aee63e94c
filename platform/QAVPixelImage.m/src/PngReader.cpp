#include "ImageFiles.h"
#include "PngSession.h"

#include <bit>

namespace {

void readBytes(png_structp png, png_bytep data, std::size_t count) {
  if (std::fread(data, 1, count, static_cast<std::FILE*>(png_get_io_ptr(png))) != count) png_error(png, "cut short");
}

bool readHeader(png_structp png, png_infop info, const InputFile& file) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_read_fn(png, file.stream.get(), readBytes);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_chunk_malloc_max(png, static_cast<png_alloc_size_t>(file.bytes) * 64 + (1 << 20));
  png_read_info(png, info);
  return true;
}

// Everything becomes 8-bit grey, grey with alpha, RGB or RGBA, or 16-bit RGB or RGBA in the machine's byte order.
bool setTransformations(png_structp png, png_infop info) {
  if (setjmp(png_jmpbuf(png))) return false;
  const bool colour = (png_get_color_type(png, info) & PNG_COLOR_MASK_COLOR) != 0;
  png_set_expand(png);
  if (!colour) png_set_scale_16(png);
  if (std::endian::native == std::endian::little) png_set_swap(png);
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  return true;
}

QAVPixelImageFormat formatOf(png_structp png, png_infop info) {
  const bool deep = png_get_bit_depth(png, info) == 16;
  switch (png_get_color_type(png, info)) {
    case PNG_COLOR_TYPE_GRAY:
      return L8;
    case PNG_COLOR_TYPE_GRAY_ALPHA:
      return LA88;
    case PNG_COLOR_TYPE_RGB:
      return deep ? RGB161616 : RGB888;
    default:
      return deep ? RGBA16161616 : RGBA8888;
  }
}

bool readPixels(png_structp png, png_infop info, unsigned char* pixels) {
  if (setjmp(png_jmpbuf(png))) return false;
  const int passes = png_get_interlace_type(png, info) == PNG_INTERLACE_NONE ? 1 : PNG_INTERLACE_ADAM7_PASSES;
  const png_uint_32 height = png_get_image_height(png, info);
  const std::size_t stride = png_get_rowbytes(png, info);
  for (int pass = 0; pass < passes; ++pass)
    for (png_uint_32 row = 0; row < height; ++row) png_read_row(png, pixels + row * stride, nullptr);
  png_read_end(png, nullptr);
  return true;
}

}  // namespace

ImagePtr readPng(InputFile& file) {
  const PngSession reading(PngSession::Direction::Read);
  png_structp png = reading.Png();
  png_infop info = reading.Info();
  if (!reading.IsReady() || !readHeader(png, info, file)) return nullptr;
  const png_uint_32 width = png_get_image_width(png, info), height = png_get_image_height(png, info);
  const auto bits = static_cast<std::uint64_t>(png_get_bit_depth(png, info)) * png_get_channels(png, info);
  if (!isPlausiblePicture(width, height, bits, file.bytes) || !setTransformations(png, info)) return nullptr;
  ImagePtr image = makeUnfilledImage(static_cast<int>(width), static_cast<int>(height), formatOf(png, info));
  const std::size_t stride = width * static_cast<std::size_t>(image->GetBytesPerPixel());
  if (png_get_rowbytes(png, info) != stride || !readPixels(png, info, pixelsToModify(*image))) return nullptr;
  return image;
}
