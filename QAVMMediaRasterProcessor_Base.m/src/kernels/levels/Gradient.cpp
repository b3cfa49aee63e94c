#include "kernels/Gradient.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

#include "RowFilter.h"

namespace {

[[gnu::always_inline]] inline I16 magnitude(I16 v) {
#if QAV_KERNEL_LEVEL >= 2
  return (I16)_mm512_abs_epi16((__m512i)v);
#elif QAV_KERNEL_LEVEL == 1
  return (I16)_mm256_abs_epi16((__m256i)v);
#else
  return max(v, -v);
#endif
}

template <int kept>
struct Gradient {
  using Lane = I16;
  static constexpr int kKept = kept;
  static constexpr bool kWithinByte = false;
};

struct Sobel : Gradient<2> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) {
    kept[0] = r - l;
    kept[1] = l + r + c + c;
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    return magnitude(a[0] + b[0] + c[0] + c[0]) + magnitude(a[1] - b[1]);
  }
};

struct Prewitt : Gradient<2> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) {
    kept[0] = r - l;
    kept[1] = l + c + r;
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    return magnitude(a[0] + c[0] + b[0]) + magnitude(a[1] - b[1]);
  }
};

// |N + E| + |N - E| is twice the larger of |N| and |E|.
struct PrewittCompass : Gradient<3> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) {
    kept[0] = l + c + r;
    kept[1] = r - l + c;
    kept[2] = c * 3;
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    const I16 north = a[0] + c[0] - c[2] - b[0];
    const I16 east = a[1] + c[1] - c[2] + b[1];
    return max(magnitude(north), magnitude(east)) << 1;
  }
};

// 3 times the samples of one side less 5 times those of the other is 3 times the whole ring less 8 times the latter.
struct Kirsch : Gradient<3> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) {
    kept[0] = l + c + r;
    kept[1] = l;
    kept[2] = l + r;
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    const I16 ring = (a[0] + c[2] + b[0]) * 3;
    return magnitude(ring - (b[0] << 3)) + magnitude(ring - ((a[1] + c[1] + b[1]) << 3));
  }
};

struct Roberts : Gradient<2> {
  [[gnu::always_inline]] static void across(I16, I16 c, I16 r, I16, I16* kept) {
    kept[0] = c;
    kept[1] = r;
  }
  [[gnu::always_inline]] static I16 down(const I16*, const I16* c, const I16* b, I16, I16) {
    return magnitude(c[1] - b[0]) + magnitude(c[0] - b[1]);
  }
};

[[gnu::always_inline]] inline F32 magnitude(F32 v) { return (F32)((U32)v & splat<U32>(0x7FFFFFFF)); }

// Every difference and sum of samples is a whole number that a float holds; only the products round.
struct Isotropic : Gradient<3> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) {
    kept[0] = r - l;
    kept[1] = c;
    kept[2] = l + r;
  }
  [[gnu::always_inline]] static I32 response(I32 left, I32 middle, I32 right, I32 rows, I32 above, I32 below) {
    const F32 root = splat<F32>(1.4142135f);
    const F32 gx = root * toFloat(middle) + toFloat(left) + toFloat(right);
    const F32 gy = root * toFloat(rows) + toFloat(above) - toFloat(below);
    return truncate(min(magnitude(gx) + magnitude(gy), splat<F32>(255.0f)));
  }
  [[gnu::always_inline]] static I32 low(I16 v) { return ((I32)v << 16) >> 16; }
  [[gnu::always_inline]] static I32 high(I16 v) { return (I32)v >> 16; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    const I16 rows = a[1] - b[1];
    const I32 even = response(low(a[0]), low(c[0]), low(b[0]), low(rows), low(a[2]), low(b[2]));
    const I32 odd = response(high(a[0]), high(c[0]), high(b[0]), high(rows), high(a[2]), high(b[2]));
    return (I16)(even | odd << 16);
  }
};

}  // namespace

extern const GradientKernels gradient;
const GradientKernels gradient = {kRowFilter<Sobel>,          kRowFilter<Prewitt>, kRowFilter<Isotropic>,
                                  kRowFilter<PrewittCompass>, kRowFilter<Kirsch>,  kRowFilter<Roberts>};

#include "RegionEnd.h"
