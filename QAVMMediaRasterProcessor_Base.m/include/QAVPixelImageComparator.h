#pragma once

#include <QAVExport.h>
#include <QAVPixelImage.h>
#include <QAVUnicodeString.h>

/// Compares two images of equal size pixel by pixel, for regression tests of rendered pictures.
///
/// A pixel whose difference d reaches the threshold (is not below it) is an exceedance. The statistics:
/// - count: the exceedances; percentage: count * 100 / pixels; mean: of the exceedances;
/// - deviation: square root of the mean squared distance from the mean (see each operation);
/// - maximum: the largest exceedance (ImageHDRCompare: the largest of all distances, exceedance or not), or with
///   outliers removed the largest entry that remains;
/// - differences: one entry a pixel, row after row, in an array made with `new[]` that the caller frees with
///   `delete[]`: 0.0 below the threshold, the difference, or exactly 1000.0 for an outlier.
///
/// With `sigmas` other than 0, an entry further than `sigmas` deviations from the mean is an outlier; entries of 0.0
/// are put to the same test. With no exceedance, count, percentage and mean are 0, the deviation is not-a-number (0 /
/// 0) and so nothing is an outlier; the maximum of ImageLabCompare is 0.
///
/// The two image-level operations return 1, or 0 and leave every output as it was: for a null image, unequal sizes, a
/// format that they do not compare, or a second image with fewer bytes a pixel than the first.
class QAV_EXPORT QAVPixelImageComparator {
 public:
  QAVPixelImageComparator();
  virtual ~QAVPixelImageComparator();

  /// Compares the colours of `RGB888` or `RGBA8888` images by CIEDE2000 (CIE 142-2001, unit weights) in CIE Lab
  /// relative to D65; the bytes are taken for linear sRGB of full scale 255, alpha is not compared. Equal colours
  /// differ by exactly 0; results are the same bits on every processor, within 1e-9 of the platform's colour
  /// transforms.
  ///
  /// The deviation is that of the exceedances, summed in ascending order. `median` is the middle exceedance, or the
  /// mean of the two middle ones; 0 when there is none. `outputDirectory` has no effect. The second image is read with
  /// the first one's bytes a pixel.
  static int ImageLabCompare(QAVPixelImage* first, QAVPixelImage* second, QAVUnicodeString outputDirectory,
                             double threshold, int sigmas, double& mean, int& count, double& percentage,
                             double& deviation, double& maximum, double& median, double*& differences);
  /// Compares floating-point images (formats 10 and 11) by the Euclidean distance of all the first image's channels,
  /// in single precision. The second image's rows are read with the first one's channels a pixel, so the formats should
  /// be the same.
  ///
  /// The deviation is taken over the first `count` entries of `differences`, zeros among them, not over the
  /// exceedances. With outliers removed the maximum is rounded to single precision. `median` keeps its value. Both
  /// images are also written, clamped to 0..1 and reduced to `RGB888`, to outputDirectory + "\iLDR1.TIFF" and
  /// "\iLDR2.TIFF"; failures to write are not reported.
  static int ImageHDRCompare(QAVPixelImage* first, QAVPixelImage* second, QAVUnicodeString outputDirectory,
                             double threshold, int sigmas, double& mean, int& count, double& percentage,
                             double& deviation, double& maximum, double& median, double*& differences);
  /// Compares two image files, by ImageLabCompare or ImageHDRCompare as the first one's format asks for, and writes a
  /// picture of the differences; 1, or 0 with nothing written when a file cannot be read as an image, the sizes differ,
  /// or the formats cannot be compared. Failures to write are not reported.
  ///
  /// The picture's bytes, from the difference d and a limit L: black for outliers, white for 0.0; otherwise
  /// - grey (`colour` false): (1 - d / L) * 255, and 0 when d is above L;
  /// - heat map (`colour` true): blue to green up to L / 2, green to red up to L, red above.
  /// Values are truncated and clamped to 0..255.
  ///
  /// With L = `scale` it goes to outputDirectory + "\xAbsolutediff_" + first name + "_" + second name + ".TIFF"; with
  /// `relative`, a second one with L = `maximum` to the same name with "\xRelativediff_". The names are the files' own
  /// up to the first ".". The backslash is part of the name on every platform.
  static int ImageCompare(QAVUnicodeString firstPath, QAVUnicodeString secondPath, QAVUnicodeString outputDirectory,
                          double threshold, int sigmas, double scale, double& mean, int& count, double& percentage,
                          double& deviation, double& maximum, double& median, bool colour, bool relative);
};
