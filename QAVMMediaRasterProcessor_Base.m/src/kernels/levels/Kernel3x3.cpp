#include "kernels/Kernel3x3.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

#include "RowFilter.h"

namespace {

// A kernel whose rows above and below are alike: `p` is what they contribute, `q` what the middle row does.
template <bool withinByte>
struct Symmetric {
  using Lane = I16;
  static constexpr int kKept = 2;
  static constexpr bool kWithinByte = withinByte;
  [[gnu::always_inline]] static I16 sum(const I16* a, const I16* c, const I16* b) { return a[0] + c[1] + b[0]; }
};

// A kernel that needs one partial of each row.
template <bool withinByte>
struct Single {
  using Lane = I16;
  static constexpr int kKept = 1;
  static constexpr bool kWithinByte = withinByte;
};

[[gnu::always_inline]] inline I16 scaled(I16 sum, std::uint16_t factor) {
  return (I16)mulhi((U16)sum, splat<U16>(factor));
}

struct Box : Single<true> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) { kept[0] = l + c + r; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) {
    return scaled(a[0] + c[0] + b[0], 7282);
  }
};

struct Light : Symmetric<true> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) {
    kept[0] = l + c + r;
    kept[1] = kept[0] + c;
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) {
    return scaled(sum(a, c, b), 6554);
  }
};

struct Gauss : Single<true> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) { kept[0] = l + r + c + c; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) {
    return (a[0] + b[0] + c[0] + c[0]) >> 4;
  }
};

struct Centre : Symmetric<true> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) {
    kept[0] = l + c + r;
    kept[1] = l + r + (c << 3);
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) { return sum(a, c, b) >> 4; }
};

struct SharpenLight : Symmetric<false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) {
    kept[0] = -c;
    kept[1] = c * 20 - (l + r);
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) { return sum(a, c, b) >> 4; }
};

// A sixth of 10 C - E; the weights sum to a little less than one, so a whole quotient falls to the next lower number.
struct SharpenMedium : Symmetric<false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) {
    kept[0] = -c;
    kept[1] = c * 10 - 1 - (l + r);
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) {
    return scaled(max(sum(a, c, b), I16{}), 10923);
  }
};

struct Sharpen : Symmetric<false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) {
    kept[0] = -c;
    kept[1] = c * 5 - (l + r);
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) { return sum(a, c, b); }
};

struct SharpenCross : Symmetric<false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) {
    kept[0] = l + r - c - c;
    kept[1] = c - (kept[0] << 1);
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) { return sum(a, c, b); }
};

struct SharpenStrong : Symmetric<false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) {
    kept[0] = -(l + c + r);
    kept[1] = c * 9 - (l + r);
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) { return sum(a, c, b); }
};

// With Y the corners less 4 C, the sum is E - 4 C + 0.70710677 Y, less a little that the centre weight is too large by.
struct Laplace {
  using Lane = I16;
  static constexpr int kKept = 2;
  static constexpr bool kWithinByte = false;
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) {
    kept[0] = l + r;
    kept[1] = c;
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) {
    const I16 four = c[1] << 2;
    const I16 y = a[0] + b[0] - four;
    const I16 below = (I16)(y == 0) & (I16)(c[1] > 0);
    return a[1] + b[1] + c[0] - four + y + mulhi(y, splat<I16>(-19195)) + below;
  }
};

struct SobelRows : Single<false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) { kept[0] = l + r + c + c; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16*, const I16* b) { return a[0] - b[0]; }
};

struct SobelColumns : Single<false> {
  [[gnu::always_inline]] static void across(I16 l, I16, I16 r, I16* kept) { kept[0] = r - l; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) { return a[0] + b[0] + c[0] + c[0]; }
};

struct PrewittRows : Single<false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16* kept) { kept[0] = l + c + r; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16*, const I16* b) { return a[0] - b[0]; }
};

struct PrewittColumns : Single<false> {
  [[gnu::always_inline]] static void across(I16 l, I16, I16 r, I16* kept) { kept[0] = l - r; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b) { return a[0] + c[0] + b[0]; }
};

}  // namespace

extern const Kernel3x3Kernels kernel3x3;
const Kernel3x3Kernels kernel3x3 = {kRowFilter<Box>,         kRowFilter<Light>,         kRowFilter<Gauss>,
                                    kRowFilter<Centre>,      kRowFilter<SharpenLight>,  kRowFilter<SharpenMedium>,
                                    kRowFilter<Sharpen>,     kRowFilter<SharpenCross>,  kRowFilter<SharpenStrong>,
                                    kRowFilter<Laplace>,     kRowFilter<SobelRows>,     kRowFilter<SobelColumns>,
                                    kRowFilter<PrewittRows>, kRowFilter<PrewittColumns>};

#include "RegionEnd.h"
