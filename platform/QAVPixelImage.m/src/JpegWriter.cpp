#include "ImageFiles.h"
#include "JpegErrors.h"

namespace {

class JpegWriting {
 public:
  JpegWriting() { object_.err = prepareJpegErrors(errors_); }
  ~JpegWriting() { jpeg_destroy_compress(&object_); }
  JpegWriting(const JpegWriting&) = delete;
  JpegWriting& operator=(const JpegWriting&) = delete;

  jpeg_compress_struct& Object() { return object_; }
  JpegErrors& Errors() { return errors_; }

 private:
  jpeg_compress_struct object_{};
  JpegErrors errors_{};
};

void setParameters(jpeg_compress_struct& object, const ImageSize& size, int channels) {
  object.image_width = static_cast<JDIMENSION>(size.width);
  object.image_height = static_cast<JDIMENSION>(size.height);
  object.input_components = channels;
  object.in_color_space = channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&object);
  jpeg_set_quality(&object, 95, TRUE);
  // Colour at full resolution: whoever asks for this quality does not want coloured edges smeared.
  object.comp_info[0].h_samp_factor = 1;
  object.comp_info[0].v_samp_factor = 1;
}

bool writePicture(jpeg_compress_struct& object, JpegErrors& errors, std::FILE* file, const ImageSize& size,
                  int channels, const unsigned char* pixels) {
  if (setjmp(errors.place)) return false;
  jpeg_create_compress(&object);
  jpeg_stdio_dest(&object, file);
  setParameters(object, size, channels);
  jpeg_start_compress(&object, TRUE);
  const std::size_t stride = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(channels);
  while (object.next_scanline < object.image_height) {
    JSAMPROW row = const_cast<JSAMPROW>(pixels + object.next_scanline * stride);
    jpeg_write_scanlines(&object, &row, 1);
  }
  jpeg_finish_compress(&object);
  return true;
}

}  // namespace

bool writeJpeg(std::FILE* file, const QAVPixelImage& image) {
  JpegWriting writing;
  return writePicture(writing.Object(), writing.Errors(), file, sizeOf(image), image.GetBytesPerPixel(),
                      pixelsToRead(image));
}
