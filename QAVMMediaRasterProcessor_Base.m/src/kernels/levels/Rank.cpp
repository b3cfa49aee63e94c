#include "kernels/Rank.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

#include "RowFilter.h"

namespace {

struct Minimum {
  using Lane = U8;
  static constexpr int kKept = 1;
  [[gnu::always_inline]] static void across(U8 l, U8 c, U8 r, U8, U8* kept) { kept[0] = min(min(l, r), c); }
  [[gnu::always_inline]] static U8 down(const U8* a, const U8* c, const U8* b, U8, U8) {
    return min(min(a[0], b[0]), c[0]);
  }
};

struct Maximum {
  using Lane = U8;
  static constexpr int kKept = 1;
  [[gnu::always_inline]] static void across(U8 l, U8 c, U8 r, U8, U8* kept) { kept[0] = max(max(l, r), c); }
  [[gnu::always_inline]] static U8 down(const U8* a, const U8* c, const U8* b, U8, U8) {
    return max(max(a[0], b[0]), c[0]);
  }
};

[[gnu::always_inline]] inline U8 middle(U8 a, U8 b, U8 c) { return max(min(a, b), min(max(a, b), c)); }

// Of nine values in three sorted rows, the median is the middle one of the largest of the minima, the median of the
// medians and the smallest of the maxima.
struct Median {
  using Lane = U8;
  static constexpr int kKept = 3;
  [[gnu::always_inline]] static void across(U8 l, U8 c, U8 r, U8, U8* kept) {
    const U8 low = min(l, c), high = max(l, c);
    kept[0] = min(low, r);
    kept[1] = max(low, min(high, r));
    kept[2] = max(high, r);
  }
  [[gnu::always_inline]] static U8 down(const U8* a, const U8* c, const U8* b, U8, U8) {
    return middle(max(max(a[0], c[0]), b[0]), middle(a[1], c[1], b[1]), min(min(a[2], c[2]), b[2]));
  }
};

}  // namespace

extern const RankKernels rank;
const RankKernels rank = {kRowFilter<Minimum>, kRowFilter<Median>, kRowFilter<Maximum>};

#include "RegionEnd.h"
