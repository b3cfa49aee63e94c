#pragma once

#include <QAVExport.h>
#include <QAVMMPIPixelColor.h>
#include <QAVMMPIPixelImageAccess.h>
#include <QAVPixelImage.h>

/// Finds the border of one colour around an image: first the colour, from the four corners, then how many whole rows
/// and columns have it.
///
/// Reads pixels through the platform's pixel-colour layer alone. Holds no reference to the image, which must keep its
/// size, format and buffer while the object lives. Operations that answer true or false give 1 or 0.
///
/// The corners count clockwise: 0 = (0, 0), 1 = (width - 1, 0), 2 = (width - 1, height - 1), 3 = (0, height - 1).
///
/// @code
/// QAVMMPIPixelColor trim;
/// int left, top, right, bottom;
/// QAVMMICropping cropping(image);
/// if (cropping.EvalTrimmingColorOnCornersStrategy(trim) &&
///     cropping.ComputeCroppingAreaFromTrimmingColor(trim, left, top, right, bottom)) ...
/// @endcode
class QAV_EXPORT QAVMMICropping {
 public:
  /// Looks at `image`, which must outlive the object.
  explicit QAVMMICropping(QAVPixelImage& image);
  virtual ~QAVMMICropping();
  QAVMMICropping(const QAVMMICropping&) = delete;
  QAVMMICropping& operator=(const QAVMMICropping&) = delete;

  /// True when the image has pixels that can be read. Found once and remembered.
  int IsValid();

  /// Compares the row from the iterator's position to its end with `c`. When all of it has the colour, the position
  /// goes to where the next row's scan starts (the next row's first pixel; it stays on the image's last one);
  /// otherwise to the first pixel that differs.
  int HasPixelImageRowSameColorThan_Forward(const QAVMMPIPixelColor& c);
  /// The same leftwards, to the start of the row, and on to the last pixel of the row before.
  int HasPixelImageRowSameColorThan_Backward(const QAVMMPIPixelColor& c);
  /// Compares the column from the position down; the position ends in the last row or on the first pixel that differs.
  int HasPixelImageColumnSameColorThan_Forward(const QAVMMPIPixelColor& c);
  /// Compares only the pixel at the position; if it has the colour, goes down to the last row without comparing and
  /// answers true.
  int HasPixelImageColumnSameColorThan_Backward(const QAVMMPIPixelColor& c);

  /// Groups the corners by colour, the largest group first, and gives that group's number of corners (1 to 4).
  ///
  /// `cornerGroup[i]` (four entries) is the group of corner i, `colours[g]` the colour of group g: a new array of four
  /// that the caller frees with `delete[]`. Accepts formats 0 to 3, 12 and 13; for others, and for images without
  /// pixels, the answer is 0 and `colours` null. Equal counts keep the order of discovery, but for the exchange that
  /// brings a larger group forward.
  int RetrieveCornersColors(int* cornerGroup, QAVMMPIPixelColor*& colours);
  /// Decides the trim colour: that of three or four equal corners, or of two neighbouring equal corners when the other
  /// two differ from them and from each other. Otherwise false, and `trim` as it was.
  int EvalTrimmingColorOnCornersStrategy(QAVMMPIPixelColor& trim);
  /// The area inside the border of colour `trim`: first and last column, first and last row. True when at least one
  /// row or column was taken away; false with the whole area when none was. An invalid image gives false and leaves the
  /// outputs as they were.
  ///
  /// Three answers are not what one would guess, and callers rely on them:
  /// - when no more than one row (the last row, or one reached from both sides) is left, all outputs are 0, and the
  ///   result tells whether a row was taken;
  /// - an image all of `trim` gives (width - 1, height, width - 1, height - 1) and true;
  /// - the right edge is either width - 1 or, when the last column has the colour from top to bottom, `left`.
  int ComputeCroppingAreaFromTrimmingColor(const QAVMMPIPixelColor& trim, int& left, int& top, int& right, int& bottom);

  /// RetrieveCornersColors of an object made for this call.
  static int RetrieveCornersColors(QAVPixelImage& image, int* cornerGroup, QAVMMPIPixelColor*& colours);
  /// EvalTrimmingColorOnCornersStrategy of an object made for this call.
  static int EvalTrimmingColorOnCornersStrategy(QAVPixelImage& image, QAVMMPIPixelColor& trim);
  /// ComputeCroppingAreaFromTrimmingColor of an object made for this call.
  static int ComputeCroppingAreaFromTrimmingColor(QAVPixelImage& image, const QAVMMPIPixelColor& trim, int& left,
                                                  int& top, int& right, int& bottom);

 private:
  QAVPixelImage* image_;
  int width_ = 0;
  int height_ = 0;
  [[maybe_unused]] int bytesPerPixel_;
  [[maybe_unused]] const unsigned char* pixels_;
  int validity_ = -1;  ///< -1 not known yet, otherwise IsValid's answer
  QAVMMPIPixelColor currentColour_;
  QAVMMPIPixelIterator* iterator_;
};
