#include <QAVMath3x3Matrix.h>

#include <algorithm>
#include <limits>

QAVMath3x3Matrix::QAVMath3x3Matrix(const double (&coefficients)[9]) { SetCoef(coefficients); }

QAVMath3x3Matrix::QAVMath3x3Matrix(double a11, double a12, double a13, double a21, double a22, double a23, double a31,
                                   double a32, double a33)
    : coefficients_{a11, a12, a13, a21, a22, a23, a31, a32, a33} {}

void QAVMath3x3Matrix::GetCoef(double* coefficients) const { std::copy_n(coefficients_, 9, coefficients); }

void QAVMath3x3Matrix::SetCoef(const double* coefficients) { std::copy_n(coefficients, 9, coefficients_); }

double QAVMath3x3Matrix::GetCoef(int row, int column) const {
  const bool valid = row >= 0 && row < 3 && column >= 0 && column < 3;
  return valid ? coefficients_[row * 3 + column] : std::numeric_limits<double>::quiet_NaN();
}

void QAVMath3x3Matrix::Multiply(const double* in, double* out) const {
  const double x = in[0], y = in[1], z = in[2];
  for (int row = 0; row < 3; ++row) {
    const double* m = coefficients_ + row * 3;
    out[row] = m[0] * x + m[1] * y + m[2] * z;
  }
}
