#include <QAV5X5ColorMatrix.h>
#include <QAVCheck.h>

#include <algorithm>

namespace {

constexpr int kSize = 5;
constexpr int kCount = kSize * kSize;
constexpr const char* kModule = "QAVMMediaRasterProcessor_Base.m/src/QAV5X5ColorMatrix";

}  // namespace

void QAV5X5ColorMatrix::InitializeToIdentityMatrix() noexcept {
  std::fill_n(elements_, kCount, 0.0);
  for (int i = 0; i < kSize; ++i) elements_[i * kSize + i] = 1.0;
}

int QAV5X5ColorMatrix::Initialize(const QAVRawColldouble& values) {
  if (values.Size() < kCount) return -1;
  for (int i = 0; i < kCount; ++i) elements_[i] = values[i + 1];
  return 0;
}

void QAV5X5ColorMatrix::Initialize(const QAVMath3x3Matrix& m) {
  double coefficients[9];
  m.GetCoef(coefficients);
  for (int row = 0; row < 3; ++row) std::copy_n(coefficients + row * 3, 3, elements_ + row * kSize);
}

double QAV5X5ColorMatrix::Get(int iRow, int iCol) const {
  // The line numbers are part of what callers see of a report.
  if (iRow < 0 || iRow >= kSize) {
    Check_TRUE_Failed__("iRow < 5 && iRow >= 0", kModule, 121, nullptr);
    return -1.0;
  }
  if (iCol < 0 || iCol >= kSize) {
    Check_TRUE_Failed__("iCol < 5 && iCol >= 0", kModule, 122, nullptr);
    return -1.0;
  }
  return elements_[iRow * kSize + iCol];
}

void QAV5X5ColorMatrix::GetCoef(QAVRawColldouble& out) const {
  for (const double element : elements_) out.Append(element);
}

int QAV5X5ColorMatrix::MatMul(QAVRawColldouble& in, QAVRawColldouble& out) const {
  if (in.Size() < kSize && out.Size() < kSize) return -1;
  const int rows = std::min(kSize, out.Size());
  for (int row = 1; row <= rows; ++row) out[row] = 0.0;
  for (int row = 1; row <= rows; ++row) {
    const double* elements = elements_ + (row - 1) * kSize;
    for (int column = 1; column <= kSize; ++column)
      out[row] += elements[column - 1] * (column <= in.Size() ? in[column] : 0.0);
  }
  return 0;
}
