#pragma once

#include <QAVExport.h>
#include <QAVMMPIPixelColor.h>
#include <QAVPixelImage.h>

/// Fitting images into rectangles.
class QAV_EXPORT QAVMMIResize {
 public:
  /// The image scaled to fit inside width x height with its aspect ratio kept, centred on a new image of that size.
  ///
  /// Returns a new image with one reference for the caller; the image itself with one more reference when it has the
  /// size already; or null: for an image of formats 4 to 13, without pixels, or a width or height below 2, and when
  /// the platform cannot resize or paste. Scaling is the platform's (Mitchell-Netravali). Fitted sizes round down and
  /// are at least 1.
  ///
  /// Nothing is painted: the margins keep the initial colour of a new image, transparent black. `background` may be
  /// null; otherwise its colour specification must be that of a byte format (in sRGB), which becomes the format of the
  /// result, and it must be that initial colour, except that in `RGBA8888` its alpha may be any: the result gets it.
  /// Other backgrounds give null. So does, as a rule, an image that already has the shape of the rectangle when the
  /// background's format is not the image's own: it is asked for at 0 x 0.
  static QAVPixelImage* CenterAndFitInRectangleByKeepingRatio(QAVPixelImage& image, int width, int height,
                                                              QAVMMPIPixelColor* background);
};
