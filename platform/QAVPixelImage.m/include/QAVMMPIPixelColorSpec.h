#pragma once

#include <QAVBaseUnknown.h>
#include <QAVExport.h>
#include <QAVPixelImageFormat.h>

class QAVPixelImage;

/// Colour space: which values the channels stand for.
class QAV_EXPORT QAVMMPIColorSpace : public QAVBaseUnknown {
 public:
  /// New sRGB space with one reference for the caller.
  static QAVMMPIColorSpace* CreateColorSpace();

  ~QAVMMPIColorSpace() override;

  /// 0 for sRGB values in 0..1; 10 for CIE XYZ relative to a white of Y = 1.
  int kind = 0;

 private:
  QAVMMPIColorSpace() = default;
};

/// What a pixel's channels are: a pixel format in a colour space. Reference counted.
class QAV_EXPORT QAVMMPIPixelColorSpec : public QAVBaseUnknown {
 public:
  /// New colour specification with one reference for the caller, or null for a format whose pixels have no colour. A
  /// null space stands for sRGB; another one gets a reference of the colour specification's own.
  static QAVMMPIPixelColorSpec* CreatePixelColorSpec(QAVPixelImageFormat format, QAVMMPIColorSpace* space);
  /// Colour specification of the image's pixels, with one reference for the caller, or null.
  static QAVMMPIPixelColorSpec* BuildOrRetrievePixelColorSpecFromPixelImage(const QAVPixelImage& image);
  /// True for the formats that hold `float` samples (10 and 11).
  static bool UsingFloatFormat(QAVPixelImageFormat format) noexcept;
  /// True for the formats that hold bytes (0 to 3).
  static bool UsingBaseFormat(QAVPixelImageFormat format) noexcept;

  /// The pixel format.
  QAVPixelImageFormat GetFormat() const noexcept { return format_; }
  /// Same format and same kind of colour space; false for null.
  bool HasSameSpecThan(const QAVMMPIPixelColorSpec* other) const;
  /// Same format and same kind of colour space.
  bool HasSameSpecThan(const QAVMMPIPixelColorSpec& other) const { return HasSameSpecThan(&other); }

  ~QAVMMPIPixelColorSpec() override;

 private:
  QAVMMPIPixelColorSpec(QAVPixelImageFormat format, QAVMMPIColorSpace* space) noexcept;
  QAVMMPIPixelColorSpec(const QAVMMPIPixelColorSpec&) = delete;
  QAVMMPIPixelColorSpec& operator=(const QAVMMPIPixelColorSpec&) = delete;

  QAVPixelImageFormat format_;
  QAVMMPIColorSpace* space_;
};
