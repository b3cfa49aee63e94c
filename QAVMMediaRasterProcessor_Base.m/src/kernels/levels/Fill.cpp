#include "kernels/Fill.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

[[gnu::always_inline]] inline void fill(std::uint8_t* pixels, std::size_t count, std::uint32_t colour) {
  constexpr std::size_t lanes = kLanes<U32>;
  const U32 wide = splat<U32>(colour);
  if (count >= lanes) {
    std::uint8_t* const last = pixels + 4 * (count - lanes);
    for (; pixels < last; pixels += 4 * lanes) store(pixels, wide);
    return store(last, wide);
  }
#if QAV_KERNEL_LEVEL >= 2
  _mm512_mask_storeu_epi32(pixels, static_cast<__mmask16>((1u << count) - 1), (__m512i)wide);
#else
  for (std::size_t i = 0; i < count; ++i) std::memcpy(pixels + 4 * i, &colour, 4);
#endif
}

void fillSpan(std::uint8_t* pixels, std::size_t count, std::uint32_t colour) { fill(pixels, count, colour); }

constexpr std::size_t kDoubles = kLanes<F64>;
using Columns = std::int32_t __attribute__((vector_size(kVectorBytes / 2)));
static_assert(kCrossingPadding % kDoubles == 0);

// The lanes of v but the first, then the first of `after`.
[[gnu::always_inline]] inline F64 following(F64 v, F64 after) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_alignr_epi64((__m512i)after, (__m512i)v, 1);
#elif QAV_KERNEL_LEVEL == 1
  const __m256d middle = _mm256_permute2f128_pd((__m256d)v, (__m256d)after, 0x21);
  return (F64)_mm256_shuffle_pd((__m256d)v, middle, 5);
#else
  return F64{v[1], after[0]};
#endif
}

// Takes the crossings to the next row. True when they are still in order.
[[gnu::always_inline]] inline bool advance(double* x, const double* slope, std::size_t padded) {
  I64 outOfOrder{};
  F64 after = splat<F64>(__builtin_inf());
  for (std::size_t i = padded; i > 0;) {
    i -= kDoubles;
    const F64 here = load<F64>(x + i) + load<F64>(slope + i);
    store(x + i, here);
    outOfOrder |= (I64)(here > following(here, after));
    after = here;
  }
  return signBits((U8)outOfOrder) == 0;
}

// Paints between each two crossings of one row. A pair that meets in one column leaves the row empty there.
[[gnu::always_inline]] inline void paintRow(std::uint8_t* row, F64 rightmost, const double* x, std::size_t count,
                                            std::uint32_t colour) {
  for (std::size_t i = 0; i + 1 < count; i += kDoubles) {
    F64 v = load<F64>(x + i);
    v = v > F64{} ? v : F64{};
    v = v < rightmost ? v : rightmost;
    const auto columns = __builtin_convertvector(v, Columns);
    std::int32_t ends[kDoubles];
    std::memcpy(ends, &columns, sizeof columns);
    const std::size_t pairs = (count - i) / 2 < kDoubles / 2 ? (count - i) / 2 : kDoubles / 2;
    for (std::size_t k = 0; k < pairs; ++k) {
      const std::int32_t first = ends[2 * k], last = ends[2 * k + 1];
      if (first < last) fill(row + 4 * std::ptrdiff_t{first}, static_cast<std::size_t>(last - first + 1), colour);
    }
  }
}

std::size_t fillBetween(std::uint8_t* pixels, std::int32_t width, std::size_t rows, double* x, const double* slope,
                        std::size_t count, std::uint32_t colour) {
  const F64 rightmost = splat<F64>(width - 1);
  const std::size_t padded = paddedCrossings(count);
  for (std::size_t row = 0; row < rows; pixels += 4 * static_cast<std::ptrdiff_t>(width)) {
    paintRow(pixels, rightmost, x, count, colour);
    ++row;
    if (!advance(x, slope, padded)) return row;
  }
  return rows;
}

// Pixels of one row, searched for a colour and recoloured. The first pixels of a run are taken one by one: runs are
// mostly short, and a processor that guesses their ends is already at the next one when their pixels arrive. Vectors
// take the middle of long runs.
struct Row {
  std::uint8_t* pixels;
  std::uint32_t old;
  std::uint32_t colour;
  std::ptrdiff_t ahead;  // bytes to the pixels that are fetched early

  static constexpr std::int32_t kShort = 24;
  static constexpr auto kStep = static_cast<std::int32_t>(kLanes<U32>);

  [[gnu::always_inline]] std::uint8_t* at(std::int32_t x) const { return pixels + 4 * std::ptrdiff_t{x}; }
  [[gnu::always_inline]] bool isOld(std::int32_t x) const {
    std::uint32_t pixel;
    std::memcpy(&pixel, at(x), 4);
    return pixel == old;
  }
  // Four bits for each of the vector's pixels, set where it is old.
  [[gnu::always_inline]] std::uint64_t oldBits(std::int32_t x) const {
    return signBits((U8)(load<U32>(at(x)) == splat<U32>(old)));
  }
  [[gnu::always_inline]] bool allOld(std::int32_t x) const {
    return oldBits(x) == ~std::uint64_t{0} >> (64 - kVectorBytes);
  }
  [[gnu::always_inline]] void recolour(std::int32_t x) const { std::memcpy(at(x), &colour, 4); }
  // A region mostly goes on in the direction in which it was entered. The address may lie outside the picture.
  [[gnu::always_inline]] void fetchAhead(std::int32_t x) const {
    __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::intptr_t>(at(x)) + ahead), 1);
  }
  [[gnu::always_inline]] void recolourVector(std::int32_t x) const { store(at(x), splat<U32>(colour)); }

  // Recolours the columns left..right when they are a whole run.
  [[gnu::always_inline]] bool recolourRun(std::int32_t left, std::int32_t right, std::int32_t width) const {
    if ((left > 0 && isOld(left - 1)) || (right + 1 < width && isOld(right + 1))) return false;
    const std::int32_t count = right - left + 1;
    if (count < kStep) return recolourShortRun(left, count);
    const std::int32_t last = right + 1 - kStep;
    for (std::int32_t x = left; x < last; x += kStep)
      if (!allOld(x)) return false;
    if (!allOld(last)) return false;
    for (std::int32_t x = left; x < last; x += kStep) recolourVector(x);
    recolourVector(last);
    return true;
  }
  [[gnu::always_inline]] bool recolourShortRun(std::int32_t left, std::int32_t count) const {
#if QAV_KERNEL_LEVEL >= 2
    const auto bits = static_cast<__mmask16>((1u << count) - 1);
    const __m512i pixelsHere = _mm512_maskz_loadu_epi32(bits, at(left));
    if ((_mm512_cmpeq_epi32_mask(pixelsHere, (__m512i)splat<U32>(old)) & bits) != bits) return false;
    _mm512_mask_storeu_epi32(at(left), bits, (__m512i)splat<U32>(colour));
#else
    for (std::int32_t i = 0; i < count; ++i)
      if (!isOld(left + i)) return false;
    for (std::int32_t i = 0; i < count; ++i) recolour(left + i);
#endif
    return true;
  }

  // Recolours the run of old pixels from x to the right, not beyond `end`. Returns the column after it.
  [[gnu::always_inline]] std::int32_t recolourRight(std::int32_t x, std::int32_t end) const {
    const std::int32_t limit = end - x > kShort ? x + kShort : end;
    for (; x < limit && isOld(x); ++x) recolour(x);
    return x < limit || limit == end ? x : recolourLongRight(x, end);
  }
  // The same from x to the left. Returns the column before the run.
  [[gnu::always_inline]] std::int32_t recolourLeft(std::int32_t x) const {
    const std::int32_t limit = x > kShort ? x - kShort : -1;
    for (; x > limit && isOld(x); --x) recolour(x);
    return x > limit || limit < 0 ? x : recolourLongLeft(x);
  }
  // The first column from x on that is old, or `end`.
  [[gnu::always_inline]] std::int32_t findOld(std::int32_t x, std::int32_t end) const {
    const std::int32_t limit = end - x > kShort ? x + kShort : end;
    while (x < limit && !isOld(x)) ++x;
    return x < limit || limit >= end ? x : findOldFarther(x, end);
  }

  [[gnu::noinline]] std::int32_t recolourLongRight(std::int32_t x, std::int32_t end) const {
    for (; end - x >= kStep && allOld(x); x += kStep) recolourVector(x);
    for (; x < end && isOld(x); ++x) recolour(x);
    return x;
  }
  [[gnu::noinline]] std::int32_t recolourLongLeft(std::int32_t x) const {
    for (; x + 1 >= kStep && allOld(x + 1 - kStep); x -= kStep) recolourVector(x + 1 - kStep);
    for (; x >= 0 && isOld(x); --x) recolour(x);
    return x;
  }
  [[gnu::noinline]] std::int32_t findOldFarther(std::int32_t x, std::int32_t end) const {
    while (end - x >= kStep && oldBits(x) == 0) x += kStep;
    while (x < end && !isOld(x)) ++x;
    return x;
  }
};

// A run of recoloured pixels whose neighbours in the row below (direction 1) or above (-1) are to be visited.
struct Seed {
  std::int32_t row, left, right, direction;
};

class SeedStack {
 public:
  explicit SeedStack(std::int32_t height) : height_(height) {}
  [[gnu::always_inline]] void push(std::int32_t row, std::int32_t left, std::int32_t right, std::int32_t direction) {
    if (count_ < kCapacity && row + direction >= 0 && row + direction < height_)
      seeds_[count_++] = {row, left, right, direction};
  }
  bool empty() const { return count_ == 0; }
  Seed pop() { return seeds_[--count_]; }

 private:
  // A fixed size, and what does not fit is dropped: callers' pictures depend on both.
  static constexpr std::size_t kCapacity = 10000;
  std::int32_t height_;
  std::size_t count_ = 0;
  Seed seeds_[kCapacity];
};

// Visits the pixels that adjoin one run: each old run among them is recoloured and becomes a seed in the same
// direction, and what sticks out on either side one in the other direction.
[[gnu::always_inline]] inline void visitNeighbours(const Row& row, const Seed& seed, std::int32_t width,
                                                   SeedStack& stack) {
  const std::int32_t y = seed.row + seed.direction;
  const auto recolourRun = [&](std::int32_t left, std::int32_t from) {
    const std::int32_t end = row.recolourRight(from, width);
    stack.push(y, left, end - 1, seed.direction);
    row.fetchAhead(left);
    if (end > seed.right + 1) stack.push(y, seed.right + 1, end - 1, -seed.direction);
    return end;
  };
  std::int32_t x = row.recolourLeft(seed.left);
  if (x < seed.left) {
    const std::int32_t left = x + 1;
    if (left < seed.left) stack.push(y, left, seed.left - 1, -seed.direction);
    x = recolourRun(left, seed.left + 1);
  }
  while (x < seed.right) {
    x = row.findOld(x + 1, seed.right + 1);
    if (x <= seed.right) x = recolourRun(x, x);
  }
}

// Rows mostly repeat the run of the row before. As long as they do, the seed walks on by itself: it would be the only
// one pushed and the next one popped. Returns false when it has left the picture.
[[gnu::always_inline]] inline bool followRun(Row& row, Seed& seed, std::int32_t width, std::int32_t height) {
  const std::ptrdiff_t step = seed.direction * 4 * static_cast<std::ptrdiff_t>(width);
  while (row.recolourRun(seed.left, seed.right, width)) {
    row.fetchAhead(seed.left);
    seed.row += seed.direction;
    row.pixels += step;
    if (seed.row + seed.direction < 0 || seed.row + seed.direction >= height) return false;
  }
  return true;
}

void floodFill(std::uint8_t* pixels, std::int32_t width, std::int32_t height, std::int32_t x, std::int32_t y,
               std::uint32_t colour) {
  const std::ptrdiff_t stride = 4 * static_cast<std::ptrdiff_t>(width);
  std::uint32_t old;
  std::memcpy(&old, pixels + y * stride + 4 * std::ptrdiff_t{x}, 4);
  if (old == colour) return;
  SeedStack stack(height);
  stack.push(y, x, x, 1);
  stack.push(y + 1, x, x, -1);
  while (!stack.empty()) {
    Seed seed = stack.pop();
    Row row = {pixels + (seed.row + seed.direction) * stride, old, colour, 12 * seed.direction * stride};
    if (followRun(row, seed, width, height)) visitNeighbours(row, seed, width, stack);
  }
}

}  // namespace

extern const FillKernels fill;
const FillKernels fill = {&fillSpan, &fillBetween, &floodFill};

#include "RegionEnd.h"
