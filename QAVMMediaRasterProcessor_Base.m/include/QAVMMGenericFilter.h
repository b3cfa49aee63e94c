#pragma once

#include <QAVExport.h>

/// Reconstruction kernel of a resampling: derive from it to resample with a kernel of your own.
///
///     class Tent : public QAVMMGenericFilter {
///      public:
///       Tent() : QAVMMGenericFilter(1.0) {}
///       double Evaluate(double x) override { return std::max(0.0, 1.0 - std::abs(x)); }
///     };
///
/// QAVMMResamplingKernels.h has the usual ones ready. The kernel need not be symmetric nor sum to one: weights are
/// normalised by their sum (QAVMMWeightsTable).
class QAV_EXPORT QAVMMGenericFilter {
 public:
  /// A kernel that is 0 beyond `halfWidth`.
  explicit QAVMMGenericFilter(double halfWidth = 0.0) noexcept : support(halfWidth) {}
  virtual ~QAVMMGenericFilter();
  /// The kernel's value at the signed distance `x`, in source samples. May throw: whoever resamples then passes the
  /// exception on and leaks nothing.
  virtual double Evaluate(double x) = 0;

  /// Half-width of the kernel, in source samples at scale 1.
  double support;
};
