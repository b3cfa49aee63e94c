#include "kernels/Kernel3x3.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

#include "RowFilter.h"

namespace {

template <int kept, bool withinByte>
struct Kernel {
  using Lane = I16;
  static constexpr int kKept = kept;
  static constexpr bool kWithinByte = withinByte;
};

[[gnu::always_inline]] inline I16 scaled(I16 sum, std::uint16_t factor) {
  return (I16)mulhi((U16)sum, splat<U16>(factor));
}

// Kernels that need the sum of all nine samples.
template <bool withinByte>
struct SumOfNine : Kernel<1, withinByte> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) { kept[0] = l + c + r; }
  [[gnu::always_inline]] static I16 sum(const I16* a, const I16* c, const I16* b) { return a[0] + c[0] + b[0]; }
};

struct Box : SumOfNine<true> {
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    return scaled(sum(a, c, b), 7282);
  }
};

struct Light : SumOfNine<true> {
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16 centre, I16) {
    return scaled(sum(a, c, b) + centre, 6554);
  }
};

struct Centre : SumOfNine<true> {
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16 centre, I16) {
    return (sum(a, c, b) - centre + (centre << 3)) >> 4;
  }
};

struct SharpenStrong : SumOfNine<false> {
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16 centre, I16) {
    return centre * 10 - sum(a, c, b);
  }
};

struct Gauss : Kernel<1, true> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) { kept[0] = l + r + c + c; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    return (a[0] + b[0] + c[0] + c[0]) >> 4;
  }
};

// Kernels without corners: of a row above nothing is needed but its own sample, which is added in at once.
struct Edges : Kernel<1, false> {
  [[gnu::always_inline]] static void across(I16 l, I16, I16 r, I16 above, I16* kept) { kept[0] = l + r + above; }
};

struct SharpenLight : Edges {
  [[gnu::always_inline]] static I16 down(const I16*, const I16* c, const I16*, I16 centre, I16 south) {
    return (centre * 20 - c[0] - south) >> 4;
  }
};

// A sixth of 10 C - E; the weights sum to a little less than one, so a whole quotient falls to the next lower number.
struct SharpenMedium : Edges {
  [[gnu::always_inline]] static I16 down(const I16*, const I16* c, const I16*, I16 centre, I16 south) {
    return scaled(max(centre * 10 - 1 - c[0] - south, I16{}), 10923);
  }
};

struct Sharpen : Edges {
  [[gnu::always_inline]] static I16 down(const I16*, const I16* c, const I16*, I16 centre, I16 south) {
    return centre * 5 - c[0] - south;
  }
};

// The rows above and below weigh 1 -2 1, the middle one -2 5 -2.
struct SharpenCross : Kernel<2, false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) {
    kept[0] = l + r - c - c;
    kept[1] = c - (kept[0] << 1);
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    return a[0] + c[1] + b[0];
  }
};

// With Y the corners less 4 C, the sum is E - 4 C + 0.70710677 Y, less a little that the centre weight is too large by.
struct Laplace : Kernel<2, false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) {
    kept[0] = l + r;
    kept[1] = c;
  }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    const I16 four = c[1] << 2;
    const I16 y = a[0] + b[0] - four;
    const I16 below = (I16)(y == 0) & (I16)(c[1] > 0);
    return a[1] + b[1] + c[0] - four + y + mulhi(y, splat<I16>(-19195)) + below;
  }
};

struct SobelRows : Kernel<1, false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) { kept[0] = l + r + c + c; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16*, const I16* b, I16, I16) { return a[0] - b[0]; }
};

struct SobelColumns : Kernel<1, false> {
  [[gnu::always_inline]] static void across(I16 l, I16, I16 r, I16, I16* kept) { kept[0] = r - l; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    return a[0] + b[0] + c[0] + c[0];
  }
};

struct PrewittRows : Kernel<1, false> {
  [[gnu::always_inline]] static void across(I16 l, I16 c, I16 r, I16, I16* kept) { kept[0] = l + c + r; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16*, const I16* b, I16, I16) { return a[0] - b[0]; }
};

struct PrewittColumns : Kernel<1, false> {
  [[gnu::always_inline]] static void across(I16 l, I16, I16 r, I16, I16* kept) { kept[0] = l - r; }
  [[gnu::always_inline]] static I16 down(const I16* a, const I16* c, const I16* b, I16, I16) {
    return a[0] + c[0] + b[0];
  }
};

}  // namespace

extern const Kernel3x3Kernels kernel3x3;
const Kernel3x3Kernels kernel3x3 = {kRowFilter<Box>,         kRowFilter<Light>,         kRowFilter<Gauss>,
                                    kRowFilter<Centre>,      kRowFilter<SharpenLight>,  kRowFilter<SharpenMedium>,
                                    kRowFilter<Sharpen>,     kRowFilter<SharpenCross>,  kRowFilter<SharpenStrong>,
                                    kRowFilter<Laplace>,     kRowFilter<SobelRows>,     kRowFilter<SobelColumns>,
                                    kRowFilter<PrewittRows>, kRowFilter<PrewittColumns>};

#include "RegionEnd.h"
