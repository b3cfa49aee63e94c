#include <QAVMMICropping.h>

#include "cropping/CornerGroups.h"

#include <algorithm>
#include <memory>

namespace {

bool hasReadableCorners(QAVPixelImageFormat format) {
  return (format >= L8 && format <= RGBA8888) || format == RGB161616 || format == RGBA16161616;
}

bool hasSpec(const QAVPixelImage& image) {
  QAVMMPIPixelColorSpec* const spec = QAVMMPIPixelColorSpec::BuildOrRetrievePixelColorSpecFromPixelImage(image);
  if (spec) spec->Release();
  return spec;
}

}  // namespace

QAVMMICropping::QAVMMICropping(QAVPixelImage& image)
    : image_(&image),
      bytesPerPixel_(image.GetBytesPerPixel()),
      pixels_(image.GetPixelsToRead()),
      iterator_(QAVMMPIPixelImageAccess::GetIterator(image)) {
  image.GetSize(width_, height_);
  IsValid();
}

QAVMMICropping::~QAVMMICropping() {
  if (iterator_) iterator_->Release();
  pixels_ = nullptr;
}

int QAVMMICropping::IsValid() {
  if (validity_ < 0) validity_ = iterator_ && !iterator_->IsEmpty();
  return validity_;
}

int QAVMMICropping::HasPixelImageRowSameColorThan_Forward(const QAVMMPIPixelColor& c) {
  if (!IsValid() || iterator_->IsEmpty()) return 0;
  int x = 0, y = 0;
  iterator_->GetPosition(x, y);
  const int run = iterator_->CountSameColorRight(c, width_ - x);
  if (iterator_->GoTo(x + run, y)) return 0;
  iterator_->GoTo(width_ - 1, y);
  iterator_->StepRight();
  return 1;
}

int QAVMMICropping::HasPixelImageRowSameColorThan_Backward(const QAVMMPIPixelColor& c) {
  if (!IsValid() || iterator_->IsEmpty()) return 0;
  int x = 0, y = 0;
  iterator_->GetPosition(x, y);
  const int run = iterator_->CountSameColorLeft(c, x + 1);
  if (iterator_->GoTo(x - run, y)) return 0;
  iterator_->GoTo(0, y);
  iterator_->StepLeft();
  return 1;
}

int QAVMMICropping::HasPixelImageColumnSameColorThan_Forward(const QAVMMPIPixelColor& c) {
  if (!IsValid() || iterator_->IsEmpty()) return 0;
  int x = 0, y = 0;
  iterator_->GetPosition(x, y);
  const int run = iterator_->CountSameColorDown(c, height_ - y);
  if (iterator_->GoTo(x, y + run)) return 0;
  iterator_->GoTo(x, height_ - 1);
  return 1;
}

int QAVMMICropping::HasPixelImageColumnSameColorThan_Backward(const QAVMMPIPixelColor& c) {
  if (!IsValid() || iterator_->IsEmpty()) return 0;
  iterator_->GetColor(currentColour_);
  if (!currentColour_.HasSameColorWithSameSpecThan(c)) return 0;
  while (iterator_->StepDown()) {
  }
  return 1;
}

bool QAVMMICropping::ReadCorners(QAVMMPIPixelColor* corners) {
  const int places[4][2] = {{0, 0}, {width_ - 1, 0}, {width_ - 1, height_ - 1}, {0, height_ - 1}};
  for (int i = 0; i < 4; ++i) {
    if (!iterator_->GoTo(places[i][0], places[i][1])) return false;
    iterator_->GetColor(corners[i]);
  }
  return true;
}

int QAVMMICropping::RetrieveCornersColors(int* cornerGroup, QAVMMPIPixelColor*& colours) {
  colours = nullptr;
  if (!IsValid() || !hasReadableCorners(image_->GetFormat())) return 0;
  colours = new QAVMMPIPixelColor[4];
  QAVMMPIPixelColor corners[4];
  if (!hasSpec(*image_) || !ReadCorners(corners)) return 0;
  qav::CornerGroups groups{colours, cornerGroup};
  for (int i = 0; i < 4; ++i) groups.Add(i, corners[i]);
  groups.SortBySize();
  return groups.counts[0];
}

int QAVMMICropping::EvalTrimmingColorOnCornersStrategy(QAVMMPIPixelColor& trim) {
  int group[4] = {};
  QAVMMPIPixelColor* colours = nullptr;
  const int agreeing = RetrieveCornersColors(group, colours);
  const std::unique_ptr<QAVMMPIPixelColor[]> owner(colours);
  if (agreeing < 2) return 0;
  bool decided = agreeing >= 3;
  if (agreeing == 2 && std::count(group, group + 4, 1) < 2)
    for (int i = 0; i < 4; ++i) decided |= group[i] == group[(i + 1) % 4];
  if (decided) trim = colours[0];
  return decided;
}

// Rows that were taken away so far have the trim colour; any other row equal to one of them has it too.
struct QAVMMICropping::RowScan {
  bool backward = false;
  int reference = -1;
};

bool QAVMMICropping::TakeRow(const QAVMMPIPixelColor& trim, int y, RowScan& scan) {
  const int difference = scan.reference < 0 ? -1 : iterator_->CompareRows(y, scan.reference);
  if (difference >= 0) return difference == 0;
  iterator_->GoTo(scan.backward ? width_ - 1 : 0, y);
  if (!(scan.backward ? HasPixelImageRowSameColorThan_Backward(trim) : HasPixelImageRowSameColorThan_Forward(trim)))
    return false;
  if (scan.reference < 0) scan.reference = y;
  return true;
}

// The rows above `top` and below `bottom` have the colour throughout, so the shortest run of the others decides.
int QAVMMICropping::CountLeadingColumns(const QAVMMPIPixelColor& trim, int top, int bottom) {
  int columns = width_ - 1;
  for (int y = top; y <= bottom && columns > 0; ++y) {
    iterator_->GoTo(0, y);
    columns = iterator_->CountSameColorRight(trim, columns);
  }
  return columns;
}

bool QAVMMICropping::HasLastColumn(const QAVMMPIPixelColor& trim, int top, int bottom) {
  if (!iterator_->GoTo(width_ - 1, top)) return true;
  const int rows = bottom - top + 1;
  return iterator_->CountSameColorDown(trim, rows) == rows;
}

int QAVMMICropping::ComputeCroppingAreaFromTrimmingColor(const QAVMMPIPixelColor& trim, int& left, int& top, int& right,
                                                         int& bottom) {
  if (!IsValid()) return 0;
  left = top = 0;
  right = width_ - 1;
  bottom = height_ - 1;
  if (!iterator_->GoTo(0, 0)) return 0;

  RowScan scan;
  while (top < height_ && TakeRow(trim, top, scan)) ++top;
  const bool topTaken = top > 0;
  // Against the last row, not the height: an image all of the colour goes on.
  if (top == height_ - 1) {
    left = top = right = bottom = 0;
    return topTaken;
  }
  scan.backward = true;
  while (bottom > top && TakeRow(trim, bottom, scan)) --bottom;
  const bool rowTaken = topTaken || bottom < height_ - 1;
  if (top == bottom) {
    left = top = right = bottom = 0;
    return rowTaken;
  }
  left = CountLeadingColumns(trim, top, bottom);
  // The scan from the right looks at the last column again for every step, so it takes all columns or none.
  if (left < right && HasLastColumn(trim, top, bottom)) right = left;
  return rowTaken || left > 0 || right < width_ - 1;
}

int QAVMMICropping::RetrieveCornersColors(QAVPixelImage& image, int* cornerGroup, QAVMMPIPixelColor*& colours) {
  return QAVMMICropping(image).RetrieveCornersColors(cornerGroup, colours);
}

int QAVMMICropping::EvalTrimmingColorOnCornersStrategy(QAVPixelImage& image, QAVMMPIPixelColor& trim) {
  return QAVMMICropping(image).EvalTrimmingColorOnCornersStrategy(trim);
}

int QAVMMICropping::ComputeCroppingAreaFromTrimmingColor(QAVPixelImage& image, const QAVMMPIPixelColor& trim, int& left,
                                                         int& top, int& right, int& bottom) {
  return QAVMMICropping(image).ComputeCroppingAreaFromTrimmingColor(trim, left, top, right, bottom);
}
