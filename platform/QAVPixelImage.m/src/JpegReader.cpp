#include "ImageFiles.h"
#include "JpegErrors.h"

#include <vector>

namespace {

// No picture of use has more scans; without a limit a small file could ask for any amount of work.
constexpr int kMostScans = 200;

class JpegReading {
 public:
  JpegReading() { object_.err = prepareJpegErrors(errors_); }
  ~JpegReading() { jpeg_destroy_decompress(&object_); }
  JpegReading(const JpegReading&) = delete;
  JpegReading& operator=(const JpegReading&) = delete;

  jpeg_decompress_struct& Object() { return object_; }
  JpegErrors& Errors() { return errors_; }

 private:
  jpeg_decompress_struct object_{};
  JpegErrors errors_{};
};

void stopEndlessScans(j_common_ptr object) {
  auto* const reading = reinterpret_cast<j_decompress_ptr>(object);
  if (reading->input_scan_number > kMostScans) object->err->error_exit(object);
}

bool readHeader(jpeg_decompress_struct& object, JpegErrors& errors, std::FILE* file) {
  if (setjmp(errors.place)) return false;
  jpeg_create_decompress(&object);
  jpeg_stdio_src(&object, file);
  return jpeg_read_header(&object, TRUE) == JPEG_HEADER_OK;
}

bool start(jpeg_decompress_struct& object, JpegErrors& errors, jpeg_progress_mgr& progress) {
  if (setjmp(errors.place)) return false;
  progress.progress_monitor = stopEndlessScans;
  object.progress = &progress;
  if (object.jpeg_color_space == JCS_GRAYSCALE)
    object.out_color_space = JCS_GRAYSCALE;
  else if (object.num_components == 4)
    object.out_color_space = JCS_CMYK;
  else
    object.out_color_space = JCS_RGB;
  return jpeg_start_decompress(&object) == TRUE;
}

// Cyan, magenta, yellow and black to RGB. Files with Adobe's marker hold the complements.
void convertCmyk(const unsigned char* in, unsigned char* out, std::size_t pixels, bool complemented) {
  const int flip = complemented ? 0 : 255;
  for (std::size_t i = 0; i < pixels; ++i, in += 4, out += 3)
    for (int c = 0; c < 3; ++c) out[c] = static_cast<unsigned char>(((in[c] ^ flip) * (in[3] ^ flip) + 127) / 255);
}

// `cmyk` is null, or a row's room for the four inks.
bool readPixels(jpeg_decompress_struct& object, JpegErrors& errors, unsigned char* pixels, std::size_t stride,
                unsigned char* cmyk) {
  if (setjmp(errors.place)) return false;
  while (object.output_scanline < object.output_height) {
    unsigned char* const out = pixels + object.output_scanline * stride;
    JSAMPROW row = cmyk ? cmyk : out;
    if (jpeg_read_scanlines(&object, &row, 1) != 1) return false;
    if (cmyk) convertCmyk(cmyk, out, object.output_width, object.saw_Adobe_marker == TRUE);
  }
  return jpeg_finish_decompress(&object) == TRUE && !errors.damaged;
}

}  // namespace

ImagePtr readJpeg(InputFile& file) {
  JpegReading reading;
  jpeg_decompress_struct& object = reading.Object();
  if (!readHeader(object, reading.Errors(), file.stream.get())) return nullptr;
  const std::size_t width = object.image_width, height = object.image_height;
  if (!isPlausiblePicture(width, height, static_cast<std::uint64_t>(object.num_components) * 8, file.bytes))
    return nullptr;
  jpeg_progress_mgr progress{};
  if (!start(object, reading.Errors(), progress)) return nullptr;
  const bool cmyk = object.out_color_components == 4;
  ImagePtr image = makeUnfilledImage(static_cast<int>(width), static_cast<int>(height),
                                     object.out_color_components == 1 ? L8 : RGB888);
  std::vector<unsigned char> inks(cmyk ? width * 4 : 0);
  const std::size_t stride = width * static_cast<std::size_t>(image->GetBytesPerPixel());
  const bool complete =
      readPixels(object, reading.Errors(), pixelsToModify(*image), stride, cmyk ? inks.data() : nullptr);
  return complete ? std::move(image) : nullptr;
}
