#pragma once

#include <QAVExport.h>
#include <QAVMMPIPixelColor.h>
#include <QAVPixelImage.h>

/// Position in an image that moves pixel by pixel in raster order.
///
/// A step right from the last pixel of a row goes to the first pixel of the next row, a step left from the first
/// pixel of a row to the last pixel of the row before; so successive row scans cover successive rows. A step that
/// would leave the image moves nothing. CompareRows leaves the position where it is.
class QAV_EXPORT QAVMMPIPixelIterator {
 public:
  /// Deletes the iterator.
  virtual void Release() = 0;
  /// True when there is no pixel to stand on: the image is empty or its format cannot be read.
  virtual bool IsEmpty() const = 0;
  /// True on the last pixel of a row.
  virtual bool IsEndOfRow() const = 0;
  /// True on the first pixel of a row.
  virtual bool IsStartOfRow() const = 0;
  /// Goes to column x of row y; false, and no move, outside the image.
  virtual bool GoTo(int x, int y) = 0;
  /// To the next pixel in raster order.
  virtual void StepRight() = 0;
  /// To the pixel before in raster order.
  virtual void StepLeft() = 0;
  /// One row down in the same column; false, and no move, in the last row.
  virtual bool StepDown() = 0;
  /// 0 when the two rows hold the same colours, positive when they differ, negative when it cannot tell (a row
  /// outside the image).
  virtual int CompareRows(int row, int referenceRow) = 0;
  /// The colour at the position.
  virtual void GetColor(QAVMMPIPixelColor& colour) const = 0;

  // Whole runs at once. None of these moves the position.
  /// The column and the row of the position.
  virtual void GetPosition(int& x, int& y) const = 0;
  /// How many pixels, from the position to the right, have the colour `colour` (HasSameColorWithSameSpecThan) before
  /// the first that has not; `limit` and the end of the row end the count too.
  virtual int CountSameColorRight(const QAVMMPIPixelColor& colour, int limit) const = 0;
  /// The same to the left, to the start of the row.
  virtual int CountSameColorLeft(const QAVMMPIPixelColor& colour, int limit) const = 0;
  /// The same down the column, to the last row.
  virtual int CountSameColorDown(const QAVMMPIPixelColor& colour, int limit) const = 0;

 protected:
  virtual ~QAVMMPIPixelIterator();
};

/// Reading single pixels of any format that holds pixels.
class QAV_EXPORT QAVMMPIPixelImageAccess {
 public:
  /// Colour of pixel (x, y); false, and `colour` unchanged, outside the image or for a format without pixels.
  static bool GetPixelImageColorAt(const QAVPixelImage& image, int x, int y, QAVMMPIPixelColor& colour);
  /// New iterator at (0, 0), to be given back with Release; null for a format without pixels. The image must live as
  /// long and keep its size, format and buffer.
  static QAVMMPIPixelIterator* GetIterator(const QAVPixelImage& image);
};
