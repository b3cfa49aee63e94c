#pragma once

#include <QAVExport.h>
#include <QAVMMGenericFilter.h>
#include <QAVPixelImage.h>

/// Resizes images with a separable kernel: a pass over rows and a pass over columns, weights by QAVMMWeightsTable.
///
///     QAVMMLanczos3Filter kernel;
///     QAVPixelImage* half = QAVMMResizeEngine(&kernel).scale(image, width / 2, height / 2);
///
/// Each sample is the sum of sample * weight over its run, taken in double in the order of the run. Byte samples are
/// that sum + 0.5, rounded toward zero and limited to 0..255 (not-a-number gives 0); `float` samples are the sum
/// rounded to nearest, without limits. Between the passes samples are rounded to the image's own format. Channels are
/// treated alike and alone: premultiply colours by alpha where transparent pixels must not bleed.
///
/// The engine keeps no state but the pointer to its kernel, which stays the caller's; use it on as many threads as the
/// kernel's Evaluate allows. Exceptions of Evaluate and of memory allocation pass through, and nothing leaks.
class QAV_EXPORT QAVMMResizeEngine {
 public:
  /// `filter` must outlive the engine's use. With null every weight is 0.
  explicit QAVMMResizeEngine(QAVMMGenericFilter* kernel) noexcept : filter(kernel) {}

  /// New image of the given size in the source's format, with one reference for the caller. `RGB888`, `RGBA8888`,
  /// `RGBFloat` and `RGBAFloat`; null for `L8`, and null with a report (QAVCheck.h) for a null source, one without
  /// colour specification, or another format. The pass that leaves the smaller intermediate image goes first, rows
  /// before columns when both leave the same (source height x width against source width x height, modulo 2^32).
  /// A source without a writable buffer gives an image of zeros, unless a pass is a plain copy. Sizes above INT_MAX
  /// throw std::bad_alloc.
  QAVPixelImage* scale(QAVPixelImage* src, unsigned int width, unsigned int height);

  /// Resamples the rows of `src` from srcWidth to dstWidth samples into rows 0 to dstHeight - 1 of `dst`, which has the
  /// right size and format already. Equal sizes are copied as they are, also `L8` and `LA88`; a missing buffer is then
  /// reported. Otherwise a null image or buffer, or a format that `scale` does not take, makes the pass do nothing.
  ///
  /// Sizes that do not belong to the images do no harm: samples behind the end of the source's buffer count as 0,
  /// results that would fall behind the end of the destination's buffer are dropped.
  ///
  /// A source of one bit per pixel that has byte rows (a class of the caller's own) is expanded: each result is the
  /// sum of the weights of its set bits times 255, one byte, and the destination has 8 bytes per pixel.
  void horizontalFilter(QAVPixelImage* src, unsigned int srcWidth, unsigned int srcHeight, QAVPixelImage* dst,
                        unsigned int dstWidth, unsigned int dstHeight);
  /// Resamples columns 0 to dstWidth - 1 from srcHeight to dstHeight samples; otherwise as horizontalFilter, but
  /// without one-bit sources.
  void verticalFilter(QAVPixelImage* src, unsigned int srcWidth, unsigned int srcHeight, QAVPixelImage* dst,
                      unsigned int dstWidth, unsigned int dstHeight);
  /// True for `L8`, `RGB888`, `RGBA8888`, `RGBFloat` and `RGBAFloat`. (The name is the platform's, underscores
  /// included.)
  bool __DoesResizeSupportFormat(QAVPixelImageFormat format);

  /// The kernel in use; may be exchanged between calls.
  QAVMMGenericFilter* filter;
};
