#include "kernels/ColourDifference.h"
#include "kernels/ColourMatrices.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

constexpr std::size_t kPairs = kLanes<F64>;

// Horner's rule, from the coefficient of the highest power down to the constant.
template <std::size_t n>
[[gnu::always_inline]] inline F64 polynomial(F64 x, const double (&coefficients)[n]) {
  F64 result = splat<F64>(coefficients[0]);
  for (std::size_t i = 1; i < n; ++i) result = result * x + coefficients[i];
  return result;
}

[[gnu::always_inline]] inline F64 magnitude(F64 v) { return (F64)((I64)v & 0x7FFFFFFFFFFFFFFF); }

[[gnu::always_inline]] inline F64 withSignOf(F64 v, F64 sign) {
  return (F64)(((I64)v & 0x7FFFFFFFFFFFFFFF) | ((I64)sign & ~0x7FFFFFFFFFFFFFFF));
}

// For 0.0085 to 1.1, to one unit in the last place or two. The argument is scaled into 1/8..1; a polynomial gives its
// inverse cube root to 1.4 per cent, and the series of (1 - e)^(-1/3) makes up for the error e.
[[gnu::always_inline]] inline F64 cubeRoot(F64 t) {
  static constexpr double kStart[] = {-7.071565558866786, 4.417486499487248,   -0.797709814591985,
                                      0.6206083025188917, -0.7220245425376463, 1.2139349379580466};
  static constexpr double kSeries[] = {1976.0 / 19683, 728.0 / 6561, 91.0 / 729, 35.0 / 243,
                                       14.0 / 81,      2.0 / 9,      1.0 / 3};
  const I64 below8th = t < 0.125, below64th = t < 0.015625;
  const F64 scale = below64th ? splat<F64>(64) : below8th ? splat<F64>(8) : splat<F64>(1);
  const F64 rootOfScale = below64th ? splat<F64>(0.25) : below8th ? splat<F64>(0.5) : splat<F64>(1);
  const F64 m = t * scale;
  const F64 start = polynomial(m - 0.5625, kStart);
  const F64 e = 1.0 - m * (start * start * start);
  const F64 inverse = start + start * (e * polynomial(e, kSeries));
  return m * (inverse * inverse) * rootOfScale;
}

// One row of the matrix, over full scale and the white's share, through the Lab curve.
[[gnu::always_inline]] inline F64 labCurve(F64 red, F64 green, F64 blue, const double* row, double white) {
  const double scale = 1.0 / (255.0 * white);
  const F64 t = red * (row[0] * scale) + green * (row[1] * scale) + blue * (row[2] * scale);
  constexpr double kLimit = 24.0 / 116.0 * (24.0 / 116.0) * (24.0 / 116.0);
  return t <= kLimit ? t * (841.0 / 108.0) + 16.0 / 116.0 : cubeRoot(t);
}

void toLab(ColourPairs& pairs, std::size_t count) {
  for (int side = 0; side < 2; ++side) {
    const auto& rgb = pairs.rgb[side];
    auto& lab = pairs.lab[side];
    for (std::size_t i = 0; i < count; i += kPairs) {
      const F64 red = loadDoubles(rgb[0] + i), green = loadDoubles(rgb[1] + i), blue = loadDoubles(rgb[2] + i);
      const F64 x = labCurve(red, green, blue, kRgbToXyz, 0.95047);
      const F64 y = labCurve(red, green, blue, kRgbToXyz + 3, 1.0);
      const F64 z = labCurve(red, green, blue, kRgbToXyz + 6, 1.08883);
      store(lab[0] + i, y * 116.0 - 16.0);
      store(lab[1] + i, (x - y) * 500.0);
      store(lab[2] + i, (y - z) * 200.0);
    }
  }
}

struct Direction {
  F64 cosine, sine;
};

// sqrt(c^7 / (c^7 + 25^7))
[[gnu::always_inline]] inline F64 chromaShare(F64 c) {
  const F64 square = c * c, power = square * square * square * c;
  return squareRoot(power / (power + 6103515625.0));
}

// The weight of the hue difference: multiples of the angle from the angle itself.
[[gnu::always_inline]] inline F64 hueWeight(Direction h) {
  constexpr double kCos30 = 0.86602540378443864676, kCos6 = 0.99452189536827333692, kSin6 = 0.10452846326765347140,
                   kCos63 = 0.45399049973954679156, kSin63 = 0.89100652418836786236;
  const F64 cos2 = 2.0 * h.cosine * h.cosine - 1.0, sin2 = 2.0 * h.cosine * h.sine;
  const F64 cos3 = h.cosine * (2.0 * cos2 - 1.0), sin3 = h.sine * (2.0 * cos2 + 1.0);
  const F64 cos4 = 2.0 * cos2 * cos2 - 1.0, sin4 = 2.0 * sin2 * cos2;
  return 1.0 - 0.17 * (h.cosine * kCos30 + h.sine * 0.5) + 0.24 * cos2 + 0.32 * (cos3 * kCos6 - sin3 * kSin6) -
         0.20 * (cos4 * kCos63 + sin4 * kSin63);
}

// exp(-z) for 0 <= z <= 60, to 1e-12.
[[gnu::always_inline]] inline F64 expOfMinus(F64 z) {
  static constexpr double kTaylor[] = {1.0 / 3628800, -1.0 / 362880, 1.0 / 40320, -1.0 / 5040, 1.0 / 720, -1.0 / 120,
                                       1.0 / 24,      -1.0 / 6,      0.5,         -1.0,        1.0};
  constexpr double kShift = 6755399441055744.0;  // 1.5 * 2^52: adding it rounds to an integer, held in the low bits
  const F64 shifted = z * 1.4426950408889634 + kShift;
  const F64 rest = z - (shifted - kShift) * 0.6931471805599453;
  const F64 power = (F64)((1023 - ((I64)shifted & 0xFFF)) << 52);
  return polynomial(rest, kTaylor) * power;
}

// sin(60 degrees * exp(-((h - 275) / 25)^2)), h in 0..360 degrees, to 1e-12. The squared distance is a polynomial in
// the cosine of half the angle; on the other side of 95 degrees, where the shorter way round would be the wrong one,
// the value is 0 to many places.
[[gnu::always_inline]] inline F64 rotation(Direction h) {
  constexpr double kCos275 = 0.08715574274765817356, kSin275 = -0.99619469809174553230;
  static constexpr double kSquaredDistance[] = {
      -0.0024711949751010883, 0.006205921442615832, -0.010820288389131783, 0.019465072680945224, -0.03656643052766542,
      0.07004403856231516,    -0.1373436664428835,  0.2780343974823214,    -0.5880760627769979,  1.3260196367732824,
      -3.311611586428239,     9.99708377520572,     -48.706090079857006,   18.065969767443754};
  static constexpr double kSine[] = {-1.0 / 1307674368000, 1.0 / 6227020800, -1.0 / 39916800, 1.0 / 362880,
                                     -1.0 / 5040,          1.0 / 120,        -1.0 / 6,        1.0};
  const F64 cosine = h.cosine * kCos275 + h.sine * kSin275;
  const F64 half = squareRoot(magnitude(0.5 + 0.5 * cosine));
  const F64 z = polynomial(half - 0.6, kSquaredDistance);
  const F64 bounded = z < 0.0 ? splat<F64>(0) : z;
  const I64 wrongWay = (h.sine > 0.0) & (h.cosine > -kCos275);
  const F64 angle = (wrongWay ? splat<F64>(0) : expOfMinus(bounded)) * 1.0471975511965976;
  return angle * polynomial(angle * angle, kSine);
}

// The two chromas and hues after the correction of the a axis, and the directions between them.
struct ChromaPair {
  F64 difference, mean;  // of the chromas
  F64 hueNumerator, hueDenominator;
  Direction meanHue;
  I64 undecided;  // where the mean hue is a matter of rounding
};

[[gnu::always_inline]] inline ChromaPair chromaPair(F64 a1, F64 b1, F64 a2, F64 b2) {
  const F64 meanBefore = (squareRoot(a1 * a1 + b1 * b1) + squareRoot(a2 * a2 + b2 * b2)) * 0.5;
  const F64 stretch = 1.5 - 0.5 * chromaShare(meanBefore);
  a1 *= stretch;
  a2 *= stretch;
  const F64 c1 = squareRoot(a1 * a1 + b1 * b1), c2 = squareRoot(a2 * a2 + b2 * b2);
  ChromaPair pair;
  pair.difference = c2 - c1;
  pair.mean = (c1 + c2) * 0.5;

  // 2 sqrt(c1 c2) sin(dh / 2), from the sine of dh for acute angles and from its cosine for obtuse ones.
  const F64 product = c1 * c2, dot = a1 * a2 + b1 * b2, cross = a1 * b2 - a2 * b1;
  const F64 root = squareRoot((product + magnitude(dot)) * 0.5);
  const I64 obtuse = dot < 0.0;
  pair.hueNumerator = obtuse ? withSignOf(root + root, cross) : cross;
  pair.hueDenominator = (obtuse | (product == 0.0)) ? splat<F64>(1) : root;

  // The sum of the two unit vectors, times the product, points along the mean of the shorter arc.
  const F64 x = a1 * c2 + a2 * c1, y = b1 * c2 + b2 * c1, square = x * x + y * y;
  const I64 none = square == 0.0;
  const F64 inverse = 1.0 / squareRoot(none ? splat<F64>(1) : square);
  pair.meanHue = {none ? splat<F64>(1) : x * inverse, y * inverse};
  const I64 opposite = square < 1e-8 * (product * product);
  const I64 zero = (magnitude(pair.meanHue.sine) < 1e-9) & (pair.meanHue.cosine > 0.0);
  pair.undecided = (product > 1e-20) & (opposite | zero);
  return pair;
}

[[gnu::always_inline]] inline F64 deltaE2000(F64 l1, F64 a1, F64 b1, F64 l2, F64 a2, F64 b2) {
  const ChromaPair chroma = chromaPair(a1, b1, a2, b2);
  const F64 fromMiddle = (l1 + l2) * 0.5 - 50.0, square = fromMiddle * fromMiddle, root = squareRoot(20.0 + square);
  const F64 lightness = (l2 - l1) * root / (root + 0.015 * square);
  const F64 chromatic = chroma.difference / (1.0 + 0.045 * chroma.mean);
  const F64 hueScale = 1.0 + 0.015 * chroma.mean * hueWeight(chroma.meanHue);
  const F64 hue = chroma.hueNumerator / (chroma.hueDenominator * hueScale);
  const F64 turn = -2.0 * chromaShare(chroma.mean) * rotation(chroma.meanHue);
  const F64 difference = squareRoot(lightness * lightness + chromatic * chromatic + hue * hue + turn * chromatic * hue);
  return chroma.undecided ? splat<F64>(-1) : difference;
}

void deltaE2000(ColourPairs& pairs, std::size_t count) {
  const auto& [first, second] = pairs.lab;
  for (std::size_t i = 0; i < count; i += kPairs)
    store(pairs.difference + i,
          deltaE2000(load<F64>(first[0] + i), load<F64>(first[1] + i), load<F64>(first[2] + i),
                     load<F64>(second[0] + i), load<F64>(second[1] + i), load<F64>(second[2] + i)));
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

}  // namespace

extern const ColourDifferenceKernels colourDifference;
const ColourDifferenceKernels colourDifference = {&findDifferent, &toLab, &deltaE2000};

#include "RegionEnd.h"
