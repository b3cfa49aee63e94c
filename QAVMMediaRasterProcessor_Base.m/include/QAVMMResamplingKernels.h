#pragma once

#include <QAVExport.h>
#include <QAVMMGenericFilter.h>

/// @file
/// Kernels for QAVMMResizeEngine. All are symmetric but the box, which leaves out its left end; values beyond the
/// support are 0. None has state: one object serves any number of threads.

/// 1 on (-0.5, 0.5]: the nearest pixel when enlarging, the mean of the covered pixels when shrinking.
class QAV_EXPORT QAVMMBoxFilter : public QAVMMGenericFilter {
 public:
  QAVMMBoxFilter() noexcept : QAVMMGenericFilter(0.5) {}
  double Evaluate(double x) override;
};

/// 1 - |x|: linear interpolation.
class QAV_EXPORT QAVMMTriangleFilter : public QAVMMGenericFilter {
 public:
  QAVMMTriangleFilter() noexcept : QAVMMGenericFilter(1.0) {}
  double Evaluate(double x) override;
};

/// The cubic of Keys with a = -1/2: interpolates, sharp, overshoots a little at edges. R. G. Keys, "Cubic Convolution
/// Interpolation for Digital Image Processing", 1981.
class QAV_EXPORT QAVMMCatmullRomFilter : public QAVMMGenericFilter {
 public:
  QAVMMCatmullRomFilter() noexcept : QAVMMGenericFilter(2.0) {}
  double Evaluate(double x) override;
};

/// The cubic with B = C = 1/3: a compromise of blur and ringing. D. P. Mitchell and A. N. Netravali, "Reconstruction
/// Filters in Computer Graphics", 1988.
class QAV_EXPORT QAVMMMitchellFilter : public QAVMMGenericFilter {
 public:
  QAVMMMitchellFilter() noexcept : QAVMMGenericFilter(2.0) {}
  double Evaluate(double x) override;
};

/// sinc(x) sinc(x/2), with sinc(x) = sin(pi x) / (pi x). C. E. Duchon, "Lanczos Filtering in One and Two Dimensions",
/// 1979.
class QAV_EXPORT QAVMMLanczos2Filter : public QAVMMGenericFilter {
 public:
  QAVMMLanczos2Filter() noexcept : QAVMMGenericFilter(2.0) {}
  double Evaluate(double x) override;
};

/// sinc(x) sinc(x/3): the sharpest here.
class QAV_EXPORT QAVMMLanczos3Filter : public QAVMMGenericFilter {
 public:
  QAVMMLanczos3Filter() noexcept : QAVMMGenericFilter(3.0) {}
  double Evaluate(double x) override;
};

/// sqrt(2/pi) exp(-2 x^2), a standard deviation of half a pixel: smooth, never overshoots, blurs.
class QAV_EXPORT QAVMMGaussianFilter : public QAVMMGenericFilter {
 public:
  QAVMMGaussianFilter() noexcept : QAVMMGenericFilter(2.0) {}
  double Evaluate(double x) override;
};
