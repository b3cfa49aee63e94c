#include "support/Comparison.h"

#include <algorithm>

namespace qav::bench {
namespace {

struct Record {
  int key;
  std::uint8_t r, g, b;
};

Record recordAt(const std::vector<std::uint8_t>& rgb, int x, int y) {
  x = std::clamp(x, 0, kWidth - 1);
  y = std::clamp(y, 0, kHeight - 1);
  const std::uint8_t* p = &rgb[static_cast<std::size_t>(y * kWidth + x) * 3];
  return {2220 * p[0] + 7067 * p[1] + 459 * p[2], p[0], p[1], p[2]};
}

void medianBySorting() {
  const auto& rgb = photograph(kWidth, kHeight, 3);
  static std::vector<std::uint8_t> out(rgb.size());
  std::uint8_t* to = out.data();
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      Record records[9];
      for (int i = 0; i < 9; ++i) records[i] = recordAt(rgb, x + i % 3 - 1, y + i / 3 - 1);
      std::sort(records, records + 9, [](const Record& a, const Record& b) { return a.key < b.key; });
      *to++ = records[4].r;
      *to++ = records[4].g;
      *to++ = records[4].b;
    }
  keep(out.data());
}

[[maybe_unused]] const bool added[] = {add("median RGB by key", "plain sort", &medianBySorting)};

}  // namespace
}  // namespace qav::bench
