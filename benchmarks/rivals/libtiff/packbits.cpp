#include "support/PrintData.h"

#include "MemoryFile.h"

namespace qav::bench {
namespace {

void encode(MemoryFile& file, const std::vector<std::uint8_t>& page) {
  TIFF* tiff = openFile(file, "w");
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

void decode(MemoryFile& file) {
  static std::vector<std::uint8_t> page(greyText().size());
  TIFF* tiff = openFile(file, "r");
  TIFFReadEncodedStrip(tiff, 0, page.data(), static_cast<tmsize_t>(page.size()));
  TIFFClose(tiff);
}

MemoryFile& textFile() {
  static MemoryFile file;
  if (file.bytes.empty()) encode(file, greyText());
  return file;
}

MemoryFile& photographFile() {
  static MemoryFile file;
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
