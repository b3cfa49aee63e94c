#pragma once

#include "support/Comparison.h"
#include "support/TextPage.h"

#include <ostream>
#include <streambuf>

/// What the print benchmarks of all libraries work on.
namespace qav::bench {

/// The text page in 8-bit grey, and a photograph of its size.
inline const std::vector<std::uint8_t>& greyText() {
  static const std::vector<std::uint8_t> page = [] {
    std::vector<std::uint8_t> grey;
    for (const std::uint8_t byte : textPage())
      for (int bit = 7; bit >= 0; --bit) grey.push_back(byte >> bit & 1 ? 0 : 255);
    return grey;
  }();
  return page;
}
inline const std::vector<std::uint8_t>& greyPhotograph() { return photograph(kPageWidth, kPageHeight, 1); }

/// 8 MB of a photograph.
inline const std::vector<std::uint8_t>& eightMegabytes() { return photograph(2048, 1024, 4); }

/// A stream that takes everything and keeps nothing.
inline std::ostream& discardingStream() {
  struct Buffer : std::streambuf {
    int_type overflow(int_type c) override { return c; }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
  };
  static Buffer buffer;
  static std::ostream stream(&buffer);
  return stream;
}

}  // namespace qav::bench
