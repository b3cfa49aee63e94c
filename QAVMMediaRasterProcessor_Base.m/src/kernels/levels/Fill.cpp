#include "kernels/Fill.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

[[gnu::always_inline]] inline std::uint32_t pixelAt(const std::uint8_t* pixels, std::int32_t x) {
  std::uint32_t pixel;
  std::memcpy(&pixel, pixels + 4 * static_cast<std::ptrdiff_t>(x), 4);
  return pixel;
}

[[gnu::always_inline]] inline void setPixel(std::uint8_t* pixels, std::int32_t x, std::uint32_t colour) {
  std::memcpy(pixels + 4 * static_cast<std::ptrdiff_t>(x), &colour, 4);
}

void fillSpan(std::uint8_t* pixels, std::size_t count, std::uint32_t colour) {
  std::size_t i = 0;
  const U32 wide = splat<U32>(colour);
  if (count >= kLanes<U32>) {
    for (; i + kLanes<U32> <= count; i += kLanes<U32>) store(pixels + 4 * i, wide);
    store(pixels + 4 * (count - kLanes<U32>), wide);
    return;
  }
  for (; i < count; ++i) std::memcpy(pixels + 4 * i, &colour, 4);
}

// Pixels of one row, searched for a colour.
struct Row {
  std::uint8_t* pixels;
  std::uint32_t old;
  std::uint32_t colour;

  // Recolours the run of old pixels from x to the right, not beyond `end`. Returns the column after it.
  [[gnu::always_inline]] std::int32_t recolourRight(std::int32_t x, std::int32_t end) const {
    for (; x < end && pixelAt(pixels, x) == old; ++x) setPixel(pixels, x, colour);
    return x;
  }
  // The same from x to the left. Returns the column before the run.
  [[gnu::always_inline]] std::int32_t recolourLeft(std::int32_t x) const {
    for (; x >= 0 && pixelAt(pixels, x) == old; --x) setPixel(pixels, x, colour);
    return x;
  }
  // The first column from x on that is old, or `end`.
  [[gnu::always_inline]] std::int32_t findOld(std::int32_t x, std::int32_t end) const {
    while (x < end && pixelAt(pixels, x) != old) ++x;
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

void floodFill(std::uint8_t* pixels, std::int32_t width, std::int32_t height, std::int32_t x, std::int32_t y,
               std::uint32_t colour) {
  const std::ptrdiff_t stride = 4 * static_cast<std::ptrdiff_t>(width);
  const std::uint32_t old = pixelAt(pixels + y * stride, x);
  if (old == colour) return;
  SeedStack stack(height);
  stack.push(y, x, x, 1);
  stack.push(y + 1, x, x, -1);
  while (!stack.empty()) {
    const Seed seed = stack.pop();
    visitNeighbours({pixels + (seed.row + seed.direction) * stride, old, colour}, seed, width, stack);
  }
}

}  // namespace

extern const FillKernels fill;
const FillKernels fill = {&fillSpan, &floodFill};

#include "RegionEnd.h"
