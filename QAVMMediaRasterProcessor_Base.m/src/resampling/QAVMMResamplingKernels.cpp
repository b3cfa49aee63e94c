#include <QAVMMResamplingKernels.h>

#include "kernels/ReconstructionKernels.h"
#include "resampling/KernelValues.h"

#include <cmath>
#include <typeinfo>

QAVMMGenericFilter::~QAVMMGenericFilter() = default;

namespace {

using qav::kernels::CubicPieces;
using qav::kernels::reconstructionKernels;

// Cubics of Mitchell and Netravali's family.
constexpr CubicPieces cubicPieces(double b, double c) {
  return {{(6 - 2 * b) / 6, 0, (-18 + 12 * b + 6 * c) / 6, (12 - 9 * b - 6 * c) / 6},
          {(8 * b + 24 * c) / 6, (-12 * b - 48 * c) / 6, (6 * b + 30 * c) / 6, (-b - 6 * c) / 6}};
}
constexpr CubicPieces kCatmullRom = cubicPieces(0.0, 0.5);
constexpr CubicPieces kMitchell = cubicPieces(1.0 / 3.0, 1.0 / 3.0);

// The values of a ready kernel; false for any other class. Classes derived from the ready ones may differ from them.
bool readyKernelValues(const QAVMMGenericFilter& filter, double* x, std::size_t count) {
  const auto& kernels = reconstructionKernels();
  const std::type_info& type = typeid(filter);
  if (type == typeid(QAVMMCatmullRomFilter))
    kernels.cubic(kCatmullRom, x, count);
  else if (type == typeid(QAVMMLanczos3Filter))
    kernels.lanczos(3.0, x, count);
  else if (type == typeid(QAVMMTriangleFilter))
    kernels.triangle(x, count);
  else if (type == typeid(QAVMMMitchellFilter))
    kernels.cubic(kMitchell, x, count);
  else if (type == typeid(QAVMMLanczos2Filter))
    kernels.lanczos(2.0, x, count);
  else if (type == typeid(QAVMMBoxFilter))
    kernels.box(x, count);
  else
    return false;
  return true;
}

}  // namespace

void qav::kernelValues(QAVMMGenericFilter& filter, double* x, std::size_t count) {
  if (readyKernelValues(filter, x, count)) return;
  for (std::size_t i = 0; i < count; ++i) x[i] = filter.Evaluate(x[i]);
}

double QAVMMBoxFilter::Evaluate(double x) {
  reconstructionKernels().box(&x, 1);
  return x;
}

double QAVMMTriangleFilter::Evaluate(double x) {
  reconstructionKernels().triangle(&x, 1);
  return x;
}

double QAVMMCatmullRomFilter::Evaluate(double x) {
  reconstructionKernels().cubic(kCatmullRom, &x, 1);
  return x;
}

double QAVMMMitchellFilter::Evaluate(double x) {
  reconstructionKernels().cubic(kMitchell, &x, 1);
  return x;
}

double QAVMMLanczos2Filter::Evaluate(double x) {
  reconstructionKernels().lanczos(2.0, &x, 1);
  return x;
}

double QAVMMLanczos3Filter::Evaluate(double x) {
  reconstructionKernels().lanczos(3.0, &x, 1);
  return x;
}

double QAVMMGaussianFilter::Evaluate(double x) {
  constexpr double kHeight = 0.79788456080286535588;
  return std::abs(x) < 2.0 ? kHeight * std::exp(-2.0 * x * x) : 0.0;
}
