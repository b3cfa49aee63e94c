#include <QAVMMResamplingKernels.h>

#include <cmath>
#include <numbers>

QAVMMGenericFilter::~QAVMMGenericFilter() = default;

namespace {

// Cubics of Mitchell and Netravali's family, as polynomials of |x| on 0..1 and on 1..2.
struct CubicPieces {
  double inner[4];
  double outer[4];
};

constexpr CubicPieces cubicPieces(double b, double c) {
  return {{(6 - 2 * b) / 6, 0, (-18 + 12 * b + 6 * c) / 6, (12 - 9 * b - 6 * c) / 6},
          {(8 * b + 24 * c) / 6, (-12 * b - 48 * c) / 6, (6 * b + 30 * c) / 6, (-b - 6 * c) / 6}};
}

double cubic(const CubicPieces& pieces, double x) {
  const double t = std::abs(x);
  if (!(t < 2.0)) return 0.0;
  const double* const p = t < 1.0 ? pieces.inner : pieces.outer;
  return p[0] + t * (p[1] + t * (p[2] + t * p[3]));
}

// sin(pi x) for |x| < 4. A series of our own: the C library's sine is not the same on every machine.
double sinOfPiTimes(double x) {
  const int whole = static_cast<int>(x < 0.0 ? x - 0.5 : x + 0.5);
  const double t = std::numbers::pi * (x - whole);
  // (-1)^k / (2k + 1)!; the next term is below 2^-51 for |t| <= pi / 2.
  constexpr double terms[] = {1.0,
                              -1.0 / 6,
                              1.0 / 120,
                              -1.0 / 5040,
                              1.0 / 362880,
                              -1.0 / 39916800,
                              1.0 / 6227020800.0,
                              -1.0 / 1307674368000.0,
                              1.0 / 355687428096000.0,
                              -1.0 / 121645100408832000.0};
  const double square = t * t;
  double sum = 0.0;
  for (int k = 9; k >= 0; --k) sum = sum * square + terms[k];
  return whole % 2 == 0 ? t * sum : -t * sum;
}

double lanczos(double lobes, double x) {
  if (!(std::abs(x) < lobes)) return 0.0;
  if (x == 0.0) return 1.0;
  const double angle = std::numbers::pi * x;
  return lobes * sinOfPiTimes(x) * sinOfPiTimes(x / lobes) / (angle * angle);
}

}  // namespace

double QAVMMBoxFilter::Evaluate(double x) { return x > -0.5 && x <= 0.5 ? 1.0 : 0.0; }

double QAVMMTriangleFilter::Evaluate(double x) {
  const double t = std::abs(x);
  return t < 1.0 ? 1.0 - t : 0.0;
}

double QAVMMCatmullRomFilter::Evaluate(double x) {
  constexpr CubicPieces pieces = cubicPieces(0.0, 0.5);
  return cubic(pieces, x);
}

double QAVMMMitchellFilter::Evaluate(double x) {
  constexpr CubicPieces pieces = cubicPieces(1.0 / 3.0, 1.0 / 3.0);
  return cubic(pieces, x);
}

double QAVMMLanczos2Filter::Evaluate(double x) { return lanczos(2.0, x); }

double QAVMMLanczos3Filter::Evaluate(double x) { return lanczos(3.0, x); }

double QAVMMGaussianFilter::Evaluate(double x) {
  constexpr double kHeight = 0.79788456080286535588;
  return std::abs(x) < 2.0 ? kHeight * std::exp(-2.0 * x * x) : 0.0;
}
