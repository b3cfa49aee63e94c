#pragma once

#include <QAVExport.h>
#include <QAVMath3x3Matrix.h>
#include <QAVRawColldouble.h>

/// 5x5 matrix of doubles that transforms a colour of four channels and a constant 1 for translation.
///
/// Vectors are QAVRawColldouble collections, whose positions count from 1. A new matrix is the identity.
class QAV_EXPORT QAV5X5ColorMatrix {
 public:
  /// The identity.
  QAV5X5ColorMatrix() noexcept { InitializeToIdentityMatrix(); }
  /// Copies the elements.
  QAV5X5ColorMatrix(const QAV5X5ColorMatrix&) noexcept = default;
  /// Copies the elements.
  QAV5X5ColorMatrix& operator=(const QAV5X5ColorMatrix&) noexcept = default;

  /// Back to the identity.
  void InitializeToIdentityMatrix() noexcept;
  /// Takes the first 25 values, row by row, and returns 0; fewer change nothing and give -1.
  int Initialize(const QAVRawColldouble& values);
  /// Takes the nine coefficients of `m` into rows and columns 0..2; the fourth and fifth keep their values.
  void Initialize(const QAVMath3x3Matrix& m);

  /// Element (iRow, iCol), each 0..4. Any other index is reported through Check_TRUE_Failed__, the row's alone when
  /// both are wrong, and gives -1.0.
  double Get(int iRow, int iCol) const;
  /// Appends the 25 elements to `out`, row by row.
  void GetCoef(QAVRawColldouble& out) const;
  /// out = M x in, and returns 0. Fails with -1, and no change, only when both collections hold fewer than five values:
  /// with one of them short, missing inputs count as 0 and only the outputs that exist are written. `out` is cleared
  /// before `in` is read, so a collection multiplied into itself gives zeros.
  int MatMul(QAVRawColldouble& in, QAVRawColldouble& out) const;

 private:
  double elements_[25];
};
