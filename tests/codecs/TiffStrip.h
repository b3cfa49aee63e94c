#pragma once

#include "tests/support/MemoryTiff.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qav::test {

/// A bilevel page as libtiff codes and decodes it, in a file in memory. Its rows begin on whole bytes.
class TiffStrip {
 public:
  TiffStrip(int width, int height, int compression = COMPRESSION_CCITTFAX4)
      : width_(width), height_(height), compression_(compression) {}

  bool encode(std::vector<std::uint8_t> rows) {
    return write([&](TIFF* tiff) { return TIFFWriteEncodedStrip(tiff, 0, rows.data(), count(rows)); });
  }
  bool setCoded(std::vector<std::uint8_t> data) {
    return write([&](TIFF* tiff) { return TIFFWriteRawStrip(tiff, 0, data.data(), count(data)); });
  }
  std::vector<std::uint8_t> coded() {
    std::vector<std::uint8_t> data(file_.bytes.size());
    TIFF* const tiff = file_.open("r");
    data.resize(static_cast<std::size_t>(TIFFReadRawStrip(tiff, 0, data.data(), count(data))));
    TIFFClose(tiff);
    return data;
  }
  /// Nothing when libtiff has any complaint.
  std::vector<std::uint8_t> decode() {
    std::vector<std::uint8_t> rows((static_cast<std::size_t>(width_) + 7) / 8 * static_cast<std::size_t>(height_));
    complaints() = 0;
    const auto previousError = TIFFSetErrorHandler(&complain), previousWarning = TIFFSetWarningHandler(&complain);
    TIFF* const tiff = file_.open("r");
    const bool whole = tiff && TIFFReadEncodedStrip(tiff, 0, rows.data(), count(rows)) == count(rows);
    if (tiff) TIFFClose(tiff);
    TIFFSetErrorHandler(previousError);
    TIFFSetWarningHandler(previousWarning);
    if (!whole || complaints() != 0) rows.clear();
    return rows;
  }

 private:
  static int& complaints() {
    static int count = 0;
    return count;
  }
  static void complain(const char*, const char*, va_list) { ++complaints(); }
  static tmsize_t count(const std::vector<std::uint8_t>& bytes) { return static_cast<tmsize_t>(bytes.size()); }

  template <class Write>
  bool write(Write strip) {
    file_.bytes.clear();
    TIFF* const tiff = file_.open("w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width_);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height_);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression_);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, height_);
    const bool written = strip(tiff) > 0;
    TIFFClose(tiff);
    return written;
  }

  int width_, height_, compression_;
  MemoryTiff file_;
};

}  // namespace qav::test
