#include "support/Comparison.h"
#include "support/TextPage.h"

#include "tests/support/MemoryTiff.h"

namespace qav::bench {
namespace {

using test::MemoryTiff;

MemoryTiff encode() {
  MemoryTiff file;
  file.bytes.reserve(textPage().size());
  TIFF* tiff = file.open("w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kPageWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kPageHeight);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kPageHeight);
  TIFFWriteEncodedStrip(tiff, 0, const_cast<std::uint8_t*>(textPage().data()),
                        static_cast<tmsize_t>(textPage().size()));
  TIFFClose(tiff);
  return file;
}

[[maybe_unused]] const bool added[] = {
    add("G4 encode, text page", "libtiff", [] { keep(encode().bytes.data()); }),
    add("G4 decode, text page", "libtiff",
        [] {
          static MemoryTiff file = encode();
          static std::vector<std::uint8_t> page(textPage().size());
          TIFF* tiff = file.open("r");
          TIFFReadEncodedStrip(tiff, 0, page.data(), static_cast<tmsize_t>(page.size()));
          TIFFClose(tiff);
        }),
};

}  // namespace
}  // namespace qav::bench
