#pragma once

#include <tiffio.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace qav::test {

/// A Group 4 page as libtiff codes and decodes it, in a file in memory. Its rows begin on whole bytes.
class TiffStrip {
 public:
  TiffStrip(int width, int height) : width_(width), height_(height) {}

  bool encode(std::vector<std::uint8_t> rows) {
    return write([&](TIFF* tiff) { return TIFFWriteEncodedStrip(tiff, 0, rows.data(), count(rows)); });
  }
  bool setCoded(std::vector<std::uint8_t> data) {
    return write([&](TIFF* tiff) { return TIFFWriteRawStrip(tiff, 0, data.data(), count(data)); });
  }
  std::vector<std::uint8_t> coded() {
    std::vector<std::uint8_t> data(file_.size());
    TIFF* const tiff = open("r");
    data.resize(static_cast<std::size_t>(TIFFReadRawStrip(tiff, 0, data.data(), count(data))));
    TIFFClose(tiff);
    return data;
  }
  /// Nothing when libtiff has any complaint.
  std::vector<std::uint8_t> decode() {
    std::vector<std::uint8_t> rows((static_cast<std::size_t>(width_) + 7) / 8 * static_cast<std::size_t>(height_));
    complaints() = 0;
    const auto previousError = TIFFSetErrorHandler(&complain), previousWarning = TIFFSetWarningHandler(&complain);
    TIFF* const tiff = open("r");
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

  static tmsize_t readFile(thandle_t handle, void* to, tmsize_t n) {
    auto& f = *static_cast<TiffStrip*>(handle);
    const std::size_t got = std::min(static_cast<std::size_t>(n), f.file_.size() - std::min(f.at_, f.file_.size()));
    if (got > 0) std::memcpy(to, f.file_.data() + f.at_, got);
    f.at_ += got;
    return static_cast<tmsize_t>(got);
  }
  static tmsize_t writeFile(thandle_t handle, void* from, tmsize_t n) {
    auto& f = *static_cast<TiffStrip*>(handle);
    f.file_.resize(std::max(f.file_.size(), f.at_ + static_cast<std::size_t>(n)));
    std::memcpy(f.file_.data() + f.at_, from, static_cast<std::size_t>(n));
    f.at_ += static_cast<std::size_t>(n);
    return n;
  }
  static toff_t seekFile(thandle_t handle, toff_t to, int whence) {
    auto& f = *static_cast<TiffStrip*>(handle);
    return f.at_ = static_cast<std::size_t>(to) + (whence == SEEK_CUR   ? f.at_
                                                   : whence == SEEK_END ? f.file_.size()
                                                                        : 0);
  }
  static int closeFile(thandle_t) { return 0; }
  static toff_t sizeOfFile(thandle_t handle) { return static_cast<TiffStrip*>(handle)->file_.size(); }

  TIFF* open(const char* mode) {
    at_ = 0;
    return TIFFClientOpen("memory", mode, this, &readFile, &writeFile, &seekFile, &closeFile, &sizeOfFile, nullptr,
                          nullptr);
  }
  template <class Write>
  bool write(Write strip) {
    file_.clear();
    TIFF* const tiff = open("w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width_);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height_);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, height_);
    const bool written = strip(tiff) > 0;
    TIFFClose(tiff);
    return written;
  }

  int width_, height_;
  std::vector<std::uint8_t> file_;
  std::size_t at_ = 0;
};

}  // namespace qav::test
