#pragma once

#include <QAVPixelImage.h>

#include <memory>
#include <vector>

/// Rows of a `BitonalRuns` image as packed bitmaps: decoded on reading, coded on storing.
class BitonalRows {
 public:
  explicit BitonalRows(int width);

  /// Row `row` as a bitmap, valid until the next call.
  unsigned char* Read(const QAVPixelImage& image, int row);
  /// The bitmap that Store codes, for filling it directly.
  unsigned char* Bitmap() noexcept { return bitmap_.data(); }
  std::size_t BitmapBytes() const noexcept { return bitmap_.size(); }
  /// Codes the bitmap as row `row` of the image.
  void Store(QAVPixelImage& image, int row);

 private:
  int width_;
  std::vector<unsigned char> bitmap_;
  std::unique_ptr<unsigned char[]> coded_;
};

/// Row `row` of a `BitonalRuns` image as luminance: black 0, white 255.
void readBitonalRow(const QAVPixelImage& image, int row, int width, unsigned char* luminance);

/// Packs a row of luminance: below 128 is black.
void packBitonalRow(const unsigned char* luminance, int width, unsigned char* bitmap) noexcept;
