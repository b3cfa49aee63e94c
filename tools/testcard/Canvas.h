#pragma once

#include <QAVPixelImage.h>

#include <cstddef>

namespace qav::testcard {

/// The pixels of the card are computed from integers alone, so that every machine draws the same ones.
struct Colour {
  int red = 0, green = 0, blue = 0, alpha = 255;
};

/// a where share is 0, b where it is 256.
constexpr Colour mix(Colour a, Colour b, int share) {
  const auto blend = [share](int from, int to) { return from + (to - from) * share / 256; };
  return {blend(a.red, b.red), blend(a.green, b.green), blend(a.blue, b.blue), blend(a.alpha, b.alpha)};
}

constexpr int limited(int value, int low, int high) { return value < low ? low : value > high ? high : value; }

struct Box {
  int left, top, width, height;
};

/// Writes into an RGBA8888 image; what falls outside is left out.
class Canvas {
 public:
  explicit Canvas(QAVPixelImage& image) : pixels_(image.GetPixelsToModify()) { image.GetSize(width_, height_); }

  void set(int x, int y, Colour colour) {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
    unsigned char* pixel =
        pixels_ + 4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x));
    const int channels[] = {colour.red, colour.green, colour.blue, colour.alpha};
    for (int i = 0; i < 4; ++i) pixel[i] = static_cast<unsigned char>(limited(channels[i], 0, 255));
  }

  /// Each pixel of the box is `shade(x, y)`, counted from the box's corner.
  template <class Shade>
  void fill(Box box, Shade shade) {
    for (int y = 0; y < box.height; ++y) {
      for (int x = 0; x < box.width; ++x) set(box.left + x, box.top + y, shade(x, y));
    }
  }

 private:
  unsigned char* pixels_;
  int width_ = 0;
  int height_ = 0;
};

}  // namespace qav::testcard
