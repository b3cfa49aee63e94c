#include "support/PrintData.h"

#include "tests/support/MemoryTiff.h"

namespace qav::bench {
namespace {

using test::MemoryTiff;

void encode(MemoryTiff& file, const std::vector<std::uint8_t>& page) {
  TIFF* tiff = file.open("w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kPageWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kPageHeight);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kPageHeight);
  TIFFWriteEncodedStrip(tiff, 0, const_cast<std::uint8_t*>(page.data()), static_cast<tmsize_t>(page.size()));
  TIFFClose(tiff);
}

void decode(MemoryTiff& file) {
  static std::vector<std::uint8_t> page(greyText().size());
  TIFF* tiff = file.open("r");
  TIFFReadEncodedStrip(tiff, 0, page.data(), static_cast<tmsize_t>(page.size()));
  TIFFClose(tiff);
}

MemoryTiff& textFile() {
  static MemoryTiff file;
  if (file.bytes.empty()) encode(file, greyText());
  return file;
}

MemoryTiff& photographFile() {
  static MemoryTiff file;
  if (file.bytes.empty()) encode(file, greyPhotograph());
  return file;
}

void encodeText() { encode(textFile(), greyText()); }
void encodePhotograph() { encode(photographFile(), greyPhotograph()); }

[[maybe_unused]] const bool added[] = {
    add("run-length records, grey text page", "libtiff PackBits", encodeText),
    add("run-length records, grey photograph", "libtiff PackBits", encodePhotograph),
    add("run-length encode as text, grey text page", "libtiff PackBits", encodeText),
    add("run-length encode as text, grey photograph", "libtiff PackBits", encodePhotograph),
    add("run-length size, grey text page", "libtiff PackBits", encodeText),
    add("run-length decode, grey text page", "libtiff PackBits", [] { decode(textFile()); }),
    add("run-length decode, grey photograph", "libtiff PackBits", [] { decode(photographFile()); }),
};

}  // namespace
}  // namespace qav::bench
