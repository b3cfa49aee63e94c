#include "kernels/ColourDifference.h"
#include "kernels/ColourMatrices.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

// Two vectors that take every step side by side: while one waits for a result, the other works.
struct Both {
  struct Mask {
    I64 a, b;
    [[gnu::always_inline]] friend Mask operator&(Mask x, Mask y) { return {x.a & y.a, x.b & y.b}; }
    [[gnu::always_inline]] friend Mask operator|(Mask x, Mask y) { return {x.a | y.a, x.b | y.b}; }
  };

  F64 a, b;

  Both() = default;
  [[gnu::always_inline]] Both(F64 first, F64 second) : a(first), b(second) {}
  [[gnu::always_inline]] Both(double value) : a(splat<F64>(value)), b(splat<F64>(value)) {}

  [[gnu::always_inline]] friend Both operator+(Both x, Both y) { return {x.a + y.a, x.b + y.b}; }
  [[gnu::always_inline]] friend Both operator-(Both x, Both y) { return {x.a - y.a, x.b - y.b}; }
  [[gnu::always_inline]] friend Both operator*(Both x, Both y) { return {x.a * y.a, x.b * y.b}; }
  [[gnu::always_inline]] friend Both operator/(Both x, Both y) { return {x.a / y.a, x.b / y.b}; }
  [[gnu::always_inline]] friend Mask operator<(Both x, Both y) { return {x.a < y.a, x.b < y.b}; }
  [[gnu::always_inline]] friend Mask operator<=(Both x, Both y) { return {x.a <= y.a, x.b <= y.b}; }
  [[gnu::always_inline]] friend Mask operator>(Both x, Both y) { return {x.a > y.a, x.b > y.b}; }
  [[gnu::always_inline]] friend Mask operator==(Both x, Both y) { return {x.a == y.a, x.b == y.b}; }
};

[[gnu::always_inline]] inline Both loadBoth(const double* from) {
  return {load<F64>(from), load<F64>(from + kLanes<F64>)};
}

[[gnu::always_inline]] inline Both loadBothDoubles(const std::uint8_t* from) {
  return {loadDoubles(from), loadDoubles(from + kLanes<F64>)};
}

[[gnu::always_inline]] inline void store(double* to, Both v) {
  store(to, v.a);
  store(to + kLanes<F64>, v.b);
}

[[gnu::always_inline]] inline Both choose(Both::Mask where, Both x, Both y) {
  return {where.a ? x.a : y.a, where.b ? x.b : y.b};
}

[[gnu::always_inline]] inline Both squareRoot(Both v) { return {squareRoot(v.a), squareRoot(v.b)}; }

[[gnu::always_inline]] inline F64 magnitude(F64 v) { return (F64)((I64)v & 0x7FFFFFFFFFFFFFFF); }
[[gnu::always_inline]] inline Both magnitude(Both v) { return {magnitude(v.a), magnitude(v.b)}; }

[[gnu::always_inline]] inline F64 withSignOf(F64 v, F64 sign) {
  return (F64)(((I64)v & 0x7FFFFFFFFFFFFFFF) | ((I64)sign & ~0x7FFFFFFFFFFFFFFF));
}
[[gnu::always_inline]] inline Both withSignOf(Both v, Both sign) {
  return {withSignOf(v.a, sign.a), withSignOf(v.b, sign.b)};
}

// 2 to the power of minus the integer in the low bits.
[[gnu::always_inline]] inline F64 powerOfMinus(F64 shifted) { return (F64)((1023 - ((I64)shifted & 0xFFF)) << 52); }
[[gnu::always_inline]] inline Both powerOfMinus(Both shifted) {
  return {powerOfMinus(shifted.a), powerOfMinus(shifted.b)};
}

constexpr std::size_t kPairs = 2 * kLanes<F64>;

// Horner's rule, from the coefficient of the highest power down to the constant.
template <std::size_t n>
[[gnu::always_inline]] inline Both polynomial(Both x, const double (&coefficients)[n]) {
  Both result = coefficients[0];
  for (std::size_t i = 1; i < n; ++i) result = result * x + coefficients[i];
  return result;
}

// The Lab curve of the shares of the white in the three axes, side by side too. The cube root is for 0.0085 to 1.1, to
// one unit in the last place or two: the argument is scaled into 1/8..1; a polynomial gives its inverse cube root
// to 1.4 per cent, and the series of (1 - e)^(-1/3) makes up for the error e.
[[gnu::always_inline]] inline void labCurve(Both (&axes)[3]) {
  static constexpr double kStart[] = {-7.071565558866786, 4.417486499487248,   -0.797709814591985,
                                      0.6206083025188917, -0.7220245425376463, 1.2139349379580466};
  static constexpr double kSeries[] = {1976.0 / 19683, 728.0 / 6561, 91.0 / 729, 35.0 / 243,
                                       14.0 / 81,      2.0 / 9,      1.0 / 3};
  constexpr double kLimit = 24.0 / 116.0 * (24.0 / 116.0) * (24.0 / 116.0);
  Both scaled[3], start[3], e[3], series[3];
  for (int k = 0; k < 3; ++k) {
    const Both once = choose(axes[k] < 0.125, axes[k] * 8.0, axes[k]);
    scaled[k] = choose(axes[k] < 0.015625, once * 8.0, once);
    start[k] = kStart[0];
    series[k] = kSeries[0];
  }
  for (std::size_t i = 1; i < sizeof kStart / sizeof *kStart; ++i)
    for (int k = 0; k < 3; ++k) start[k] = start[k] * (scaled[k] - 0.5625) + kStart[i];
  for (int k = 0; k < 3; ++k) e[k] = 1.0 - scaled[k] * (start[k] * start[k] * start[k]);
  for (std::size_t i = 1; i < sizeof kSeries / sizeof *kSeries; ++i)
    for (int k = 0; k < 3; ++k) series[k] = series[k] * e[k] + kSeries[i];
  for (int k = 0; k < 3; ++k) {
    const Both t = axes[k], inverse = start[k] + start[k] * (e[k] * series[k]);
    const Both root = scaled[k] * (inverse * inverse), half = choose(t < 0.125, root * 0.5, root);
    axes[k] = choose(t <= kLimit, t * (841.0 / 108.0) + 16.0 / 116.0, choose(t < 0.015625, half * 0.5, half));
  }
}

// One row of the matrix, over full scale and the white's share.
[[gnu::always_inline]] inline Both shareOfWhite(Both red, Both green, Both blue, const double* row, double white) {
  const double scale = 1.0 / (255.0 * white);
  return red * (row[0] * scale) + green * (row[1] * scale) + blue * (row[2] * scale);
}

void toLab(ColourPairs& pairs, std::size_t count) {
  for (int side = 0; side < 2; ++side) {
    const auto& rgb = pairs.rgb[side];
    auto& lab = pairs.lab[side];
    for (std::size_t i = 0; i < count; i += kPairs) {
      const Both red = loadBothDoubles(rgb[0] + i), green = loadBothDoubles(rgb[1] + i),
                 blue = loadBothDoubles(rgb[2] + i);
      Both axes[] = {shareOfWhite(red, green, blue, kRgbToXyz, 0.95047),
                     shareOfWhite(red, green, blue, kRgbToXyz + 3, 1.0),
                     shareOfWhite(red, green, blue, kRgbToXyz + 6, 1.08883)};
      labCurve(axes);
      store(lab[0] + i, axes[1] * 116.0 - 16.0);
      store(lab[1] + i, (axes[0] - axes[1]) * 500.0);
      store(lab[2] + i, (axes[1] - axes[2]) * 200.0);
    }
  }
}

struct Direction {
  Both cosine, sine;
};

// sqrt(c^7 / (c^7 + 25^7))
[[gnu::always_inline]] inline Both chromaShare(Both c) {
  const Both square = c * c, power = square * square * square * c;
  return squareRoot(power / (power + 6103515625.0));
}

// The weight of the hue difference: multiples of the angle from the angle itself.
[[gnu::always_inline]] inline Both hueWeight(Direction h) {
  constexpr double kCos30 = 0.86602540378443864676, kCos6 = 0.99452189536827333692, kSin6 = 0.10452846326765347140,
                   kCos63 = 0.45399049973954679156, kSin63 = 0.89100652418836786236;
  const Both cos2 = 2.0 * h.cosine * h.cosine - 1.0, sin2 = 2.0 * h.cosine * h.sine;
  const Both cos3 = h.cosine * (2.0 * cos2 - 1.0), sin3 = h.sine * (2.0 * cos2 + 1.0);
  const Both cos4 = 2.0 * cos2 * cos2 - 1.0, sin4 = 2.0 * sin2 * cos2;
  return 1.0 - 0.17 * (h.cosine * kCos30 + h.sine * 0.5) + 0.24 * cos2 + 0.32 * (cos3 * kCos6 - sin3 * kSin6) -
         0.20 * (cos4 * kCos63 + sin4 * kSin63);
}

// exp(-z) for 0 <= z <= 60, to 1e-12.
[[gnu::always_inline]] inline Both expOfMinus(Both z) {
  static constexpr double kTaylor[] = {1.0 / 3628800, -1.0 / 362880, 1.0 / 40320, -1.0 / 5040, 1.0 / 720, -1.0 / 120,
                                       1.0 / 24,      -1.0 / 6,      0.5,         -1.0,        1.0};
  constexpr double kShift = 6755399441055744.0;  // 1.5 * 2^52: adding it rounds to an integer, held in the low bits
  const Both shifted = z * 1.4426950408889634 + kShift;
  const Both rest = z - (shifted - kShift) * 0.6931471805599453;
  const Both power = powerOfMinus(shifted);
  return polynomial(rest, kTaylor) * power;
}

// sin(60 degrees * exp(-((h - 275) / 25)^2)), h in 0..360 degrees, to 1e-12. The squared distance is a polynomial in
// the cosine of half the angle; on the other side of 95 degrees, where the shorter way round would be the wrong one,
// the value is 0 to many places.
[[gnu::always_inline]] inline Both rotation(Direction h) {
  constexpr double kCos275 = 0.08715574274765817356, kSin275 = -0.99619469809174553230;
  static constexpr double kSquaredDistance[] = {
      -0.0024711949751010883, 0.006205921442615832, -0.010820288389131783, 0.019465072680945224, -0.03656643052766542,
      0.07004403856231516,    -0.1373436664428835,  0.2780343974823214,    -0.5880760627769979,  1.3260196367732824,
      -3.311611586428239,     9.99708377520572,     -48.706090079857006,   18.065969767443754};
  static constexpr double kSine[] = {-1.0 / 1307674368000, 1.0 / 6227020800, -1.0 / 39916800, 1.0 / 362880,
                                     -1.0 / 5040,          1.0 / 120,        -1.0 / 6,        1.0};
  const Both cosine = h.cosine * kCos275 + h.sine * kSin275;
  const Both half = squareRoot(magnitude(0.5 + 0.5 * cosine));
  const Both z = polynomial(half - 0.6, kSquaredDistance);
  const Both bounded = choose(z < 0.0, 0.0, z);
  const Both::Mask wrongWay = (h.sine > 0.0) & (h.cosine > -kCos275);
  const Both angle = choose(wrongWay, 0.0, expOfMinus(bounded)) * 1.0471975511965976;
  return angle * polynomial(angle * angle, kSine);
}

// The two chromas and hues after the correction of the a axis, and the directions between them.
struct ChromaPair {
  Both difference, mean;  // of the chromas
  Both hueNumerator, hueDenominator;
  Direction meanHue;
  Both::Mask undecided;  // where the mean hue is a matter of rounding
};

[[gnu::always_inline]] inline ChromaPair chromaPair(Both a1, Both b1, Both a2, Both b2) {
  const Both meanBefore = (squareRoot(a1 * a1 + b1 * b1) + squareRoot(a2 * a2 + b2 * b2)) * 0.5;
  const Both stretch = 1.5 - 0.5 * chromaShare(meanBefore);
  a1 = a1 * stretch;
  a2 = a2 * stretch;
  const Both c1 = squareRoot(a1 * a1 + b1 * b1), c2 = squareRoot(a2 * a2 + b2 * b2);

  // 2 sqrt(c1 c2) sin(dh / 2), from the sine of dh for acute angles and from its cosine for obtuse ones.
  const Both product = c1 * c2, dot = a1 * a2 + b1 * b2, cross = a1 * b2 - a2 * b1;
  const Both root = squareRoot((product + magnitude(dot)) * 0.5);
  const Both::Mask obtuse = dot < 0.0;
  const Both hueNumerator = choose(obtuse, withSignOf(root + root, cross), cross);
  const Both hueDenominator = choose(obtuse | (product == 0.0), 1.0, root);

  // The sum of the two unit vectors, times the product, points along the mean of the shorter arc.
  const Both x = a1 * c2 + a2 * c1, y = b1 * c2 + b2 * c1, square = x * x + y * y;
  const Both::Mask none = square == 0.0;
  const Both inverse = 1.0 / squareRoot(choose(none, 1.0, square));
  const Direction meanHue = {choose(none, 1.0, x * inverse), y * inverse};
  const Both::Mask opposite = square < 1e-8 * (product * product);
  const Both::Mask zero = (magnitude(meanHue.sine) < 1e-9) & (meanHue.cosine > 0.0);
  const Both::Mask undecided = (product > 1e-20) & (opposite | zero);
  return {c2 - c1, (c1 + c2) * 0.5, hueNumerator, hueDenominator, meanHue, undecided};
}

[[gnu::always_inline]] inline Both deltaE2000(Both l1, Both a1, Both b1, Both l2, Both a2, Both b2) {
  const ChromaPair chroma = chromaPair(a1, b1, a2, b2);
  const Both fromMiddle = (l1 + l2) * 0.5 - 50.0, square = fromMiddle * fromMiddle, root = squareRoot(20.0 + square);
  const Both lightness = (l2 - l1) * root / (root + 0.015 * square);
  const Both chromatic = chroma.difference / (1.0 + 0.045 * chroma.mean);
  const Both hueScale = 1.0 + 0.015 * chroma.mean * hueWeight(chroma.meanHue);
  const Both hue = chroma.hueNumerator / (chroma.hueDenominator * hueScale);
  const Both turn = -2.0 * chromaShare(chroma.mean) * rotation(chroma.meanHue);
  const Both difference =
      squareRoot(lightness * lightness + chromatic * chromatic + hue * hue + turn * chromatic * hue);
  return choose(chroma.undecided, -1.0, difference);
}

void deltaE2000(ColourPairs& pairs, std::size_t count) {
  const auto& [first, second] = pairs.lab;
  for (std::size_t i = 0; i < count; i += kPairs)
    store(pairs.difference + i, deltaE2000(loadBoth(first[0] + i), loadBoth(first[1] + i), loadBoth(first[2] + i),
                                           loadBoth(second[0] + i), loadBoth(second[1] + i), loadBoth(second[2] + i)));
}

std::size_t findDifferent(const std::uint8_t* first, const std::uint8_t* second, std::size_t pixels, std::size_t stride,
                          std::uint32_t* positions) {
  constexpr std::size_t kBlock = 16;
  std::size_t found = 0;
  for (std::size_t i = 0; i < pixels; i += kBlock) {
    const std::size_t end = i + kBlock < pixels ? i + kBlock : pixels;
    std::uint8_t any = 0;
    for (std::size_t k = i * stride; k < end * stride; ++k) any |= first[k] ^ second[k];
    if (!any) continue;
    for (std::size_t pixel = i; pixel < end; ++pixel) {
      const std::uint8_t *const a = first + pixel * stride, *const b = second + pixel * stride;
      positions[found] = static_cast<std::uint32_t>(pixel);
      found += ((a[0] ^ b[0]) | (a[1] ^ b[1]) | (a[2] ^ b[2])) != 0;
    }
  }
  return found;
}

bool allDiffer(const ColourPairs& pairs, std::size_t count) {
  const auto& [first, second] = pairs.rgb;
  std::uint8_t equal = 0;
  for (std::size_t i = 0; i < count; ++i)
    equal |= ((first[0][i] ^ second[0][i]) | (first[1][i] ^ second[1][i]) | (first[2][i] ^ second[2][i])) == 0;
  return !equal;
}

}  // namespace

extern const ColourDifferenceKernels colourDifference;
const ColourDifferenceKernels colourDifference = {&findDifferent, &allDiffer, &toLab, &deltaE2000};

#include "RegionEnd.h"
