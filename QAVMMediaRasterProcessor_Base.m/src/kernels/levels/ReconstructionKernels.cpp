#include "kernels/ReconstructionKernels.h"

#include <numbers>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

constexpr std::size_t kDoubles = kLanes<F64>;

[[gnu::always_inline]] inline F64 magnitude(F64 v) { return (F64)((U64)v & splat<U64>(0x7FFFFFFFFFFFFFFF)); }

// `v` is not negative.
[[gnu::always_inline]] inline F64 withSignOf(F64 sign, F64 v) {
  return (F64)((U64)v | ((U64)sign & splat<U64>(0x8000000000000000)));
}

// To nearest, for 0 to 2^51.
[[gnu::always_inline]] inline F64 nearest(F64 v) {
  const F64 integersOnly = splat<F64>(4503599627370496.0);
  return (v + integersOnly) - integersOnly;
}

[[gnu::always_inline]] inline F64 box(F64 x) {
  return (F64)((I64)splat<F64>(1.0) & (x > splat<F64>(-0.5)) & (x <= splat<F64>(0.5)));
}

[[gnu::always_inline]] inline F64 triangle(F64 x) {
  const F64 one = splat<F64>(1.0), t = magnitude(x);
  return (F64)((I64)(one - t) & (t < one));
}

[[gnu::always_inline]] inline F64 cubic(const CubicPieces& pieces, F64 x) {
  const F64 t = magnitude(x);
  const auto isInner = t < splat<F64>(1.0);
  F64 sum{};
  for (int power = 3; power >= 0; --power) {
    const F64 term = isInner ? splat<F64>(pieces.inner[power]) : splat<F64>(pieces.outer[power]);
    sum = power == 3 ? term : term + t * sum;
  }
  return (F64)((I64)sum & (t < splat<F64>(2.0)));
}

// sin(pi x) for |x| < 4. A series of our own: the C library's sine is not the same on every machine.
[[gnu::always_inline]] inline F64 sinOfPiTimes(F64 x) {
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
  // Halves round away from zero.
  const F64 shifted = magnitude(x) + splat<F64>(0.5);
  F64 whole = nearest(shifted);
  whole = whole > shifted ? whole - splat<F64>(1.0) : whole;
  const F64 half = whole * splat<F64>(0.5);
  const F64 t = splat<F64>(std::numbers::pi) * (x - withSignOf(x, whole)), square = t * t;
  F64 sum{};
#pragma GCC unroll 10
  for (int k = 9; k >= 0; --k) sum = sum * square + splat<F64>(terms[k]);
  const F64 sine = t * sum;
  return nearest(half) == half ? sine : -sine;
}

[[gnu::always_inline]] inline F64 lanczos(double lobes, F64 x) {
  const F64 wide = splat<F64>(lobes), angle = splat<F64>(std::numbers::pi) * x;
  const F64 value = wide * sinOfPiTimes(x) * sinOfPiTimes(x / wide) / (angle * angle);
  return (F64)((I64)(x == F64{} ? splat<F64>(1.0) : value) & (magnitude(x) < wide));
}

template <class Kernel>
[[gnu::always_inline]] inline void replace(double* x, std::size_t count, Kernel kernel) {
  std::size_t at = 0;
  for (; at + kDoubles <= count; at += kDoubles) store(x + at, kernel(load<F64>(x + at)));
  if (at == count) return;
  F64 last{};
  std::memcpy(&last, x + at, (count - at) * sizeof(double));
  last = kernel(last);
  std::memcpy(x + at, &last, (count - at) * sizeof(double));
}

void boxes(double* x, std::size_t count) {
  replace(x, count, [](F64 v) { return box(v); });
}
void triangles(double* x, std::size_t count) {
  replace(x, count, [](F64 v) { return triangle(v); });
}
void cubics(const CubicPieces& pieces, double* x, std::size_t count) {
  replace(x, count, [&](F64 v) { return cubic(pieces, v); });
}
void lanczosOf(double lobes, double* x, std::size_t count) {
  replace(x, count, [=](F64 v) { return lanczos(lobes, v); });
}

}  // namespace

extern const ReconstructionKernels reconstruction;
const ReconstructionKernels reconstruction = {&boxes, &triangles, &cubics, &lanczosOf};

#include "RegionEnd.h"
