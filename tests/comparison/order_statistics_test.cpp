#include "comparison/OrderStatistics.h"
#include "support/Test.h"

#include <bit>

namespace qav::test {
namespace {

// Values spread and crowded in every way that decides how they are sorted, to the last bit of the sum in their order.
TEST(OrderStatistics, IsThatOfSortedValues) {
  std::mt19937_64 random(4);
  const auto unit = [&] { return std::uniform_real_distribution<double>(0, 1)(random); };
  const std::function<double()> kinds[] = {
      [&] { return 100 * unit(); },
      [&] { return 2 + 1e-9 * unit(); },
      [&] { return random() % 1000 ? 2 + 1e-13 * unit() : 200 * unit(); },
      [&] { return std::exp(30 * unit() - 20); },
      [&] { return static_cast<double>(random() % 7); },
      [] { return 3.5; },
      [&] { return std::ldexp(1.0 + unit(), random() % 2 ? 3 : -1000); },
  };
  for (const auto& kind : kinds) {
    for (const std::size_t count : {1u, 2u, 1999u, 2001u, 60000u}) {
      std::vector<double> entries(count);
      std::generate(entries.begin(), entries.end(), kind);
      for (const double threshold : {0.0, 2.0 + 5e-10}) {
        std::vector<double> sorted;
        Exceedances exceedances;
        for (const double entry : entries) {
          if (entry < threshold) continue;
          sorted.push_back(entry);
          exceedances = {sorted.size(), 0.0, std::min(exceedances.least, entry), std::max(exceedances.most, entry)};
        }
        if (sorted.empty()) continue;
        std::sort(sorted.begin(), sorted.end());
        double squares = 0.0;
        for (const double value : sorted) squares += (value - 1.25) * (value - 1.25);
        const double median = (sorted[(sorted.size() - 1) / 2] + sorted[sorted.size() / 2]) / 2;
        const OrderStatistics found = orderStatistics(entries, threshold, exceedances, 1.25);
        EXPECT_EQ(found.median, median) << &kind - kinds << ", " << count;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(found.deviation),
                  std::bit_cast<std::uint64_t>(std::pow(squares / static_cast<double>(sorted.size()), 0.5)));
      }
    }
  }
}

}  // namespace
}  // namespace qav::test
