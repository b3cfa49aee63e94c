#include <QAVMMIHelperRGBA.h>

#include "drawing/Brushes.h"
#include "drawing/Canvas.h"
#include "drawing/Ellipses.h"
#include "drawing/Lines.h"
#include "drawing/Polygons.h"
#include "drawing/Spans.h"
#include "formats/Saturate.h"
#include "kernels/Fill.h"

QAVMMIHelperRGBA::QAVMMIHelperRGBA(QAVPixelImage& image)
    : image_(image), pixels_(nullptr), attached_(false), width_(0), height_(0) {
  Attach(image);
}

QAVMMIHelperRGBA::~QAVMMIHelperRGBA() {
  pixels_ = nullptr;
  attached_ = false;
}

HRESULT QAVMMIHelperRGBA::Attach(QAVPixelImage& other) {
  attached_ = false;
  if (other.GetFormat() != RGBA8888) return E_FAIL;
  pixels_ = reinterpret_cast<unsigned int*>(other.GetPixelsToModify());
  if (!pixels_) return E_FAIL;
  other.GetSize(width_, height_);
  // One positive side is enough.
  if (width_ < 1 && height_ < 1) return E_FAIL;
  image_ = other;
  attached_ = true;
  return S_OK;
}

qav::Canvas QAVMMIHelperRGBA::canvas() const {
  if (!attached_ || width_ < 1 || height_ < 1) return {};
  return {reinterpret_cast<unsigned char*>(pixels_), width_, height_};
}

void QAVMMIHelperRGBA::Clear(unsigned int colour) {
  const qav::Canvas target = canvas();
  qav::kernels::fillKernels().fillSpan(target.bytes, static_cast<std::size_t>(target.width * target.height), colour);
}

void QAVMMIHelperRGBA::Plot(int x, int y, unsigned int colour) { canvas().plot(x, y, colour); }

unsigned int QAVMMIHelperRGBA::Pick(int x, int y) {
  const qav::Canvas target = canvas();
  std::uint32_t colour = 0;
  if (target.contains(x, y)) std::memcpy(&colour, target.at(x, y), 4);
  return colour;
}

void QAVMMIHelperRGBA::HLine(int y, int x1, int x2, unsigned int colour) {
  qav::SpanPainter(canvas(), colour)(y, x1, x2);
}

void QAVMMIHelperRGBA::Line(int x1, int y1, int x2, int y2, unsigned int colour, QAVMMIBrush brush) {
  if (brush == QAVMMIBrushPixel)
    qav::drawLine(canvas(), {x1, y1}, {x2, y2}, colour);
  else
    LineBrush(x1, y1, x2, y2, colour, brush);
}

void QAVMMIHelperRGBA::LineBrush(int x1, int y1, int x2, int y2, unsigned int colour, QAVMMIBrush brush) {
  qav::drawStampedLine(canvas(), {x1, y1}, {x2, y2}, brush, colour);
}

void QAVMMIHelperRGBA::Brush(int x, int y, unsigned int colour, QAVMMIBrush brush) {
  qav::StampPainter(canvas(), qav::stampOf(brush), colour)(y, x, x);
}

void QAVMMIHelperRGBA::Rectangle(int x1, int y1, int x2, int y2, unsigned int colour, unsigned char filled) {
  const qav::Canvas target = canvas();
  if (filled) {
    const qav::Interval rows = target.height > 0 ? qav::clampedInterval(y1, y2, target.height) : qav::Interval();
    const qav::SpanPainter paint(target, colour);
    for (std::int64_t y = rows.first; !rows.empty() && y <= rows.last; ++y) paint(y, x1, x2);
    return;
  }
  qav::drawLine(target, {x1, y1}, {x2, y1}, colour);
  qav::drawLine(target, {x2, y1}, {x2, y2}, colour);
  qav::drawLine(target, {x2, y2}, {x1, y2}, colour);
  qav::drawLine(target, {x1, y2}, {x1, y1}, colour);
}

void QAVMMIHelperRGBA::Ellipse(int cx, int cy, int rx, int ry, unsigned int colour, unsigned char filled) {
  if (filled)
    qav::fillEllipse(canvas(), {cx, cy}, rx, ry, colour);
  else
    qav::drawEllipse(canvas(), {cx, cy}, rx, ry, colour);
}

void QAVMMIHelperRGBA::Circle(int cx, int cy, int r, unsigned int colour, unsigned char filled) {
  Ellipse(cx, cy, r, r, colour, filled);
}

void QAVMMIHelperRGBA::Draw(const QAVMMIRectangle2DP& rectangle) {
  Rectangle(qav::intFrom(rectangle.x1), qav::intFrom(rectangle.y1), qav::intFrom(rectangle.x2),
            qav::intFrom(rectangle.y2), rectangle.colour, rectangle.filled);
}

void QAVMMIHelperRGBA::Fill(int x, int y, unsigned int colour) {
  const qav::Canvas target = canvas();
  if (target.contains(x, y)) qav::kernels::fillKernels().floodFill(target.bytes, width_, height_, x, y, colour);
}

void QAVMMIHelperRGBA::FillArea(int polygonCount, const int* counts, const int* points, unsigned int colour) {
  if (polygonCount < 1 || !counts || !points) return;
  qav::drawPolygons(canvas(), {counts, static_cast<std::size_t>(polygonCount)}, points, colour);
}
