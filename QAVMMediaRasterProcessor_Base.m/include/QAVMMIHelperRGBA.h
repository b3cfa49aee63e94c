#pragma once

#include <QAVExport.h>
#include <QAVPixelImage.h>
#include <QAVResult.h>

#include <cstdint>

namespace qav {
struct Canvas;
}

/// Stamps of the line and brush operations. An even-sized or scattered stamp is not centred on its position: Round4
/// covers -2..1 by -1..2 (y downwards), Square2 -1..0 by 0..1. No stamp reaches further than 7 pixels.
enum QAVMMIBrush : std::int32_t {
  QAVMMIBrushPixel = 0,           ///< one pixel
  QAVMMIBrushRound4 = 1,          ///< disc, 4 pixels across
  QAVMMIBrushRound7 = 2,          ///< disc, 7 pixels across
  QAVMMIBrushSquare2 = 3,         ///< 2 x 2 pixels
  QAVMMIBrushSquare5 = 4,         ///< 5 x 5 pixels
  QAVMMIBrushSquare7 = 5,         ///< 7 x 7 pixels
  QAVMMIBrushDiagonal2 = 6,       ///< 2 pixels of a diagonal that falls to the right
  QAVMMIBrushDiagonal5 = 7,       ///< 5 pixels of it
  QAVMMIBrushDiagonal9 = 8,       ///< 9 pixels of it
  QAVMMIBrushAntiDiagonal2 = 9,   ///< 2 pixels of a diagonal that rises to the right
  QAVMMIBrushAntiDiagonal5 = 10,  ///< 5 pixels of it
  QAVMMIBrushAntiDiagonal9 = 11,  ///< 9 pixels of it
  QAVMMIBrushSpray12 = 12,        ///< 12 scattered pixels
};

/// A rectangle with its colour, for QAVMMIHelperRGBA::Draw.
struct QAVMMIRectangle2DP {
  std::int32_t reserved = 0;  ///< drawing does not read it
  double x1 = 0;              ///< column of one corner
  double y1 = 0;              ///< row of that corner
  double x2 = 0;              ///< column of the opposite corner
  double y2 = 0;              ///< row of the opposite corner
  unsigned int colour = 0;    ///< 0xAABBGGRR
  unsigned char filled = 0;   ///< other than 0: filled, otherwise the outline alone
};

/// Draws into the pixels of one `RGBA8888` image.
///
/// Coordinates are any 32-bit values, x to the right and y downwards; what falls outside the image is left out, pixel
/// by pixel, and costs no time where the visible part can be found directly (spans, lines, rectangles). A colour is
/// 0xAABBGGRR and replaces the whole pixel, alpha included: only Blend mixes. A helper that is not attached draws
/// nothing.
///
///     QAVMMIHelperRGBA helper(image);
///     helper.Clear(0xFFFFFFFFu);
///     helper.Line(10, 10, 200, 80, 0xFF0088FFu, QAVMMIBrushSquare5);
///
/// The helper keeps the pixel buffer that it found when it was attached, so the image must outlive it and keep that
/// buffer: changing the image's size or format, or assigning to it, calls for a new Attach. There is no copying, as
/// one copy's Attach would free the buffer under the other.
class QAV_EXPORT QAVMMIHelperRGBA {
 public:
  /// Attaches to `image`. When that fails the helper draws nothing; a later Attach may succeed.
  explicit QAVMMIHelperRGBA(QAVPixelImage& image);
  QAVMMIHelperRGBA(const QAVMMIHelperRGBA&) = delete;
  QAVMMIHelperRGBA& operator=(const QAVMMIHelperRGBA&) = delete;
  /// Releases nothing.
  virtual ~QAVMMIHelperRGBA();

  /// Draws into `other` from now on, and assigns it (a deep copy) to the image given to the constructor. S_OK, or
  /// E_FAIL for a format other than `RGBA8888`, a buffer that cannot be changed, or an image with neither width nor
  /// height; the helper is then detached. An image with one side of zero is accepted, and nothing is drawn into it.
  HRESULT Attach(QAVPixelImage& other);

  /// Sets every pixel.
  void Clear(unsigned int colour);
  /// Sets the pixel at (x, y).
  void Plot(int x, int y, unsigned int colour);
  /// The pixel at (x, y); 0 outside the image.
  unsigned int Pick(int x, int y);
  /// Sets the columns x1 to x2 of row y, both included, in either order. A span of one column draws nothing; so does
  /// one whose ends fall into one column once they are clamped to the image.
  void HLine(int y, int x1, int x2, unsigned int colour);
  /// Line from (x1, y1) to (x2, y2), both ends included (Bresenham, "Algorithm for computer control of a digital
  /// plotter", 1965), one pixel wide with QAVMMIBrushPixel, else as LineBrush.
  void Line(int x1, int y1, int x2, int y2, unsigned int colour, QAVMMIBrush brush);
  /// Stamps `brush` at every point of that line.
  void LineBrush(int x1, int y1, int x2, int y2, unsigned int colour, QAVMMIBrush brush);
  /// Stamps `brush` at (x, y). Nothing for an unknown brush.
  void Brush(int x, int y, unsigned int colour, QAVMMIBrush brush);
  /// Rectangle between two opposite corners, both included. Filled, it is made of HLine rows and needs, after clamping
  /// to the image, at least two rows and two columns; otherwise it is four lines.
  void Rectangle(int x1, int y1, int x2, int y2, unsigned int colour, unsigned char filled);
  /// Ellipse with its axes along rows and columns, radii rx and ry around (cx, cy), by the two-region midpoint
  /// algorithm (Pitteway 1967; Van Aken 1984). Filled, rows of one pixel are left out, as HLine does. A negative rx
  /// gives the two end points of the horizontal axis, or the span between them; the sign of ry does not matter.
  void Ellipse(int cx, int cy, int rx, int ry, unsigned int colour, unsigned char filled);
  /// Ellipse with both radii r.
  void Circle(int cx, int cy, int r, unsigned int colour, unsigned char filled);
  /// Rectangle with its corners rounded toward zero.
  void Draw(const QAVMMIRectangle2DP& rectangle);

  /// Recolours the region of equal pixels (alpha included) around (x, y), connected along rows and columns. The seeds
  /// still to be visited are held in a fixed stack of 10000; what does not fit is dropped, so a very ragged region may
  /// be left partly unfilled. Allocates nothing.
  void Fill(int x, int y, unsigned int colour);
  /// Draws the outlines of `polygonCount` polygons and fills what they enclose by the even-odd rule. `counts` has each
  /// polygon's number of vertices, `points` their x and y, polygon after polygon; each is closed from its last vertex
  /// to its first. Nothing at all is drawn when a polygon has fewer than 3 vertices. Filled rows are HLine spans: the
  /// lowest row of an edge is left to the outline, and an edge that starts above the image is followed from row 0 with
  /// the x of its upper end. Allocates in proportion to the vertices.
  void FillArea(int polygonCount, const int* counts, const int* points, unsigned int colour);

  /// Mixes `source`, its top-left pixel placed at (x, y), into the image. The source's alpha is the weight of what is
  /// already there: 0 copies the source's colour, 255 keeps the destination's, and the destination's alpha always
  /// stays. Each channel is s + (d - s) * (alpha / 255) in single precision, rounded toward zero. For ordinary
  /// compositing store 255 - alpha in the source.
  ///
  /// E_FAIL, and no change, when the helper is detached, the source is not `RGBA8888`, has no pixels, is the image
  /// given to the constructor, or lies wholly outside; else S_OK.
  HRESULT Blend(QAVPixelImage& source, int x, int y);

 private:
  qav::Canvas canvas() const;

  QAVPixelImage& image_;
  unsigned int* pixels_;
  bool attached_;
  int width_;
  int height_;
};
