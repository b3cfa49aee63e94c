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

bool readCorners(QAVMMPIPixelIterator& iterator, int width, int height, QAVMMPIPixelColor* corners) {
  const int places[4][2] = {{0, 0}, {width - 1, 0}, {width - 1, height - 1}, {0, height - 1}};
  for (int i = 0; i < 4; ++i) {
    if (!iterator.GoTo(places[i][0], places[i][1])) return false;
    iterator.GetColor(corners[i]);
  }
  return true;
}

// Looks for whole rows and columns of one colour. Scans that callers make afterwards go on from where these end.
class BorderScan {
 public:
  BorderScan(QAVMMICropping& cropping, QAVMMPIPixelIterator& iterator, int width, const QAVMMPIPixelColor& trim)
      : cropping_(cropping), iterator_(iterator), width_(width), trim_(trim) {}

  void GoBackward(int lastRow) {
    backward_ = true;
    iterator_.GoTo(width_ - 1, lastRow);
  }

  // A row equal to one that has the colour has it too.
  bool HasRow(int y) {
    const int difference = reference_ < 0 ? -1 : iterator_.CompareRows(y, reference_);
    if (difference >= 0) return difference == 0;
    iterator_.GoTo(backward_ ? width_ - 1 : 0, y);
    if (!(backward_ ? cropping_.HasPixelImageRowSameColorThan_Backward(trim_)
                    : cropping_.HasPixelImageRowSameColorThan_Forward(trim_)))
      return false;
    if (reference_ < 0) reference_ = y;
    return true;
  }

  // How many columns from the left, but for the last one, have the colour. The rows above `top` and below `bottom` have
  // it throughout, so the shortest run of the others decides.
  int CountLeadingColumns(int top, int bottom) const {
    int columns = width_ - 1;
    for (int y = top; y <= bottom && columns > 0; ++y) {
      iterator_.GoTo(0, y);
      columns = iterator_.CountSameColorRight(trim_, columns);
    }
    return columns;
  }

  // Ends at the pixel that has another colour, or at the top.
  bool HasLastColumn(int top, int bottom) const {
    iterator_.GoTo(width_ - 1, top);
    const int same = top > bottom ? 0 : iterator_.CountSameColorDown(trim_, bottom - top + 1);
    const bool all = same > bottom - top;
    iterator_.GoTo(width_ - 1, all ? 0 : top + same);
    return all;
  }

 private:
  QAVMMICropping& cropping_;
  QAVMMPIPixelIterator& iterator_;
  int width_;
  const QAVMMPIPixelColor& trim_;
  bool backward_ = false;
  int reference_ = -1;
};

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

int QAVMMICropping::RetrieveCornersColors(int* cornerGroup, QAVMMPIPixelColor*& colours) {
  colours = nullptr;
  if (!IsValid() || !hasReadableCorners(image_->GetFormat())) return 0;
  colours = new QAVMMPIPixelColor[4];
  QAVMMPIPixelColor corners[4];
  if (!hasSpec(*image_) || !readCorners(*iterator_, width_, height_, corners)) return 0;
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

int QAVMMICropping::ComputeCroppingAreaFromTrimmingColor(const QAVMMPIPixelColor& trim, int& left, int& top, int& right,
                                                         int& bottom) {
  if (!IsValid()) return 0;
  left = top = 0;
  right = width_ - 1;
  bottom = height_ - 1;
  if (!iterator_->GoTo(0, 0)) return 0;

  BorderScan scan(*this, *iterator_, width_, trim);
  while (top < height_ && scan.HasRow(top)) ++top;
  const bool topTaken = top > 0;
  // Against the last row, not the height: an image all of the colour goes on.
  if (top == height_ - 1) {
    left = top = right = bottom = 0;
    return topTaken;
  }
  scan.GoBackward(height_ - 1);
  while (bottom > top && scan.HasRow(bottom)) --bottom;
  const bool rowTaken = topTaken || bottom < height_ - 1;
  if (top == bottom) {
    left = top = right = bottom = 0;
    return rowTaken;
  }
  left = scan.CountLeadingColumns(top, bottom);
  // The scan from the right looks at the last column again for every step, so it takes all columns or none.
  if (left == right)
    iterator_->GoTo(right, 0);
  else if (scan.HasLastColumn(top, bottom))
    right = left;
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
