#pragma once

#include <QAVExport.h>

/// 3x3 matrix of doubles, kept row by row.
class QAV_EXPORT QAVMath3x3Matrix {
 public:
  /// The identity.
  QAVMath3x3Matrix() = default;
  /// Nine coefficients, row by row.
  explicit QAVMath3x3Matrix(const double (&coefficients)[9]);
  /// Nine coefficients; a12 is the second of the first row.
  QAVMath3x3Matrix(double a11, double a12, double a13, double a21, double a22, double a23, double a31, double a32,
                   double a33);

  /// Copies the nine coefficients to `coefficients`, row by row.
  void GetCoef(double* coefficients) const;
  /// Takes nine coefficients, row by row.
  void SetCoef(const double* coefficients);
  /// Coefficient (row, column), each 0..2; not-a-number for any other.
  double GetCoef(int row, int column) const;

  /// out = M x in for vectors of three. `in` and `out` may be the same.
  void Multiply(const double* in, double* out) const;

 private:
  double coefficients_[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
};
