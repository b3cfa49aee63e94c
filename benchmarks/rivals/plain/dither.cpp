#include "kernels/VariableDiffusionTable.h"
#include "support/Comparison.h"

#include <algorithm>
#include <cstring>

namespace qav::bench {
namespace {

// A copy of the picture, made anew for every call.
std::uint8_t* picture() {
  static std::vector<std::uint8_t> copy(std::size_t{kWidth} * kHeight);
  const auto& bytes = photograph(kWidth, kHeight, 1);
  std::memcpy(copy.data(), bytes.data(), bytes.size());
  return copy.data();
}

// Walks the picture with rows of sums that have four spare columns on either side.
template <int scale, class Spread>
void diffuse(Spread spread) {
  static std::vector<int> rows[3] = {std::vector<int>(kWidth + 8), std::vector<int>(kWidth + 8),
                                     std::vector<int>(kWidth + 8)};
  for (auto& row : rows) std::fill(row.begin(), row.end(), 0);
  int *here = rows[0].data() + 4, *next = rows[1].data() + 4, *after = rows[2].data() + 4;
  std::uint8_t* pixel = picture();
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x, ++pixel) {
      const int s = *pixel * scale + here[x];
      int e = s / scale;
      *pixel = 0;
      if (s > 128 * scale - 1) {
        *pixel = 255;
        e -= 255;
      }
      spread(here + x, next + x, after + x, e);
    }
    int* const done = here;
    here = next;
    next = after;
    after = done;
    std::memset(after - 4, 0, (kWidth + 8) * sizeof(int));
  }
  keep(pixel);
}

void floydSteinberg() {
  diffuse<16>([](int* here, int* next, int*, int e) {
    here[1] += e * 7;
    next[-1] += e * 3;
    next[0] += e * 5;
    next[1] += e;
  });
}

void shortRow() {
  diffuse<16>([](int* here, int* next, int*, int e) {
    here[1] += e * 8;
    next[-3] += e;
    next[-2] += e;
    next[-1] += e * 2;
    next[0] += e * 4;
  });
}

void jarvis() {
  diffuse<48>([](int* here, int* next, int* after, int e) {
    here[1] += e * 7;
    here[2] += e * 5;
    next[-2] += e * 8;
    next[0] += e * 7;
    next[1] += e * 5;
    next[2] += e * 3;
    after[-2] += e * 4;
    after[0] += e * 5;
    after[1] += e * 3;
    after[2] += e;
  });
}

void stucki() {
  diffuse<42>([](int* here, int* next, int* after, int e) {
    here[1] += e * 8;
    here[2] += e * 4;
    next[-2] += e * 6;
    next[0] += e * 8;
    next[1] += e * 4;
    next[2] += e * 2;
    after[-2] += e * 3;
    after[0] += e * 4;
    after[1] += e * 2;
    after[2] += e;
  });
}

void variable() {
  static kernels::DiffusionShares table[128];
  std::copy(std::begin(kernels::kVariableDiffusionShares), std::end(kernels::kVariableDiffusionShares), table);
  static std::vector<int> sums(kWidth + 2);
  std::fill(sums.begin(), sums.end(), 0);
  std::uint8_t* row = picture();
  for (int y = 0; y < kHeight; ++y, row += kWidth) {
    const int step = y % 2 ? -1 : 1;
    for (int x = y % 2 ? kWidth - 1 : 0; x >= 0 && x < kWidth; x += step) {
      int* const here = &sums[static_cast<std::size_t>(x) + 1];
      const int value = row[x];
      const int q = (value * 4194304 + *here) >> 22;
      const int e = q > 127 ? q - 255 : q;
      row[x] = q > 127 ? 255 : 0;
      table[0] = table[value < 128 ? value : 255 - value];
      here[step] += e * table[0].right;
      here[-step] += e * table[0].downLeft;
      *here = e * table[0].down;
    }
  }
  keep(row);
}

[[maybe_unused]] const bool added[] = {
    add("dither 0, plain loop", "plain loop", &floydSteinberg), add("dither 1, plain loop", "plain loop", &shortRow),
    add("dither 2, plain loop", "plain loop", &jarvis),         add("dither 3, plain loop", "plain loop", &stucki),
    add("dither 4, plain loop", "plain loop", &variable),
};

}  // namespace
}  // namespace qav::bench
