#include "resampling/RatioWeights.h"
#include "support/Test.h"

namespace qav::test {
namespace {

TEST(RatioWeights, ReciprocalsDivideAsPromised) {
  int found = 0;
  for (int divisor = 2; divisor <= 254; ++divisor) {
    const auto reciprocal = reciprocalOf(divisor);
    if (!reciprocal) continue;
    ++found;
    for (unsigned n = 0; n <= 0xFFFF; ++n) {
      const unsigned quotient = n * static_cast<unsigned>(reciprocal->reciprocal) >> (16 + reciprocal->shift);
      ASSERT_EQ(std::min(quotient, 255u), std::min(n / static_cast<unsigned>(divisor), 255u)) << n << " / " << divisor;
    }
  }
  EXPECT_GT(found, 200);
}

TEST(RatioWeights, CommonParts) {
  const struct {
    std::vector<double> weights;
    int parts;
  } cases[] = {{{5.0 / 6 + 1e-13, 1.0 / 6 - 1e-13}, 6},                      // sums of excesses that decide
               {{1.0 / 6, 1.0 / 6, 1.0 / 6, 1.0 / 6, 1.0 / 6, 1.0 / 6}, 0},  // and that do not
               {{1.0 / 3, 2.0 / 3}, 3},
               {{0.3, 0.7 + 1e-6}, 0},
               {{0.7071067811865476, 0.2928932188134524}, 0}};
  for (const auto& [weights, parts] : cases) {
    kernels::ByteTaps taps;
    taps.weights = weights.data();
    taps.count = static_cast<std::int32_t>(weights.size());
    EXPECT_EQ(commonParts({&taps, 1}, 127.0), parts) << weights[0];
  }
}

}  // namespace
}  // namespace qav::test
