#include "resampling/Definition.h"
#include "support/Test.h"

#include <bit>

namespace qav::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Run {
  std::vector<double> weights;
  int left = 0;
  int right = 0;
};

Run definedRun(QAVMMGenericFilter* filter, int dstSize, int srcSize, int i) {
  double support = filter ? filter->support : 0.0, k = 1.0;
  const double scale = static_cast<double>(dstSize) / srcSize;
  if (scale < 1.0) {
    support = support / scale;
    k = scale;
  }
  const int windowSize = 2 * static_cast<int>(std::ceil(support)) + 1;
  const double center = i / scale + (0.5 / scale - 0.5);
  Run run;
  run.left = std::max(0, static_cast<int>(std::floor(center - support)));
  run.right = std::min(srcSize - 1, static_cast<int>(std::ceil(center + support)));
  if (run.right - run.left >= windowSize) srcSize > run.left ? ++run.left : --run.right;
  double total = 0.0;
  for (int j = run.left; j <= run.right; ++j) {
    run.weights.push_back(filter ? filter->Evaluate(k * (center - j)) * k : 0.0);
    total += run.weights.back();
  }
  if (!(total > 0.0) || total == 1.0) return run;
  for (double& w : run.weights) w /= total;
  while (run.right > run.left && run.weights.back() == 0.0) {
    run.weights.pop_back();
    --run.right;
  }
  return run;
}

void expectDefinedTable(QAVMMGenericFilter* filter, int dstSize, int srcSize) {
  const QAVMMWeightsTable table(filter, dstSize, srcSize);
  ASSERT_EQ(table.count, dstSize);
  ASSERT_EQ(table.contributions != nullptr, dstSize > 0);
  for (int i = 0; i < dstSize; ++i) {
    const Run run = definedRun(filter, dstSize, srcSize, i);
    const QAVMMContribution& entry = table.contributions[i];
    ASSERT_EQ(entry.left, run.left) << srcSize << " to " << dstSize << ", entry " << i;
    ASSERT_EQ(entry.right, run.right) << srcSize << " to " << dstSize << ", entry " << i;
    ASSERT_LE(run.weights.size(), static_cast<std::size_t>(table.windowSize));
    if (run.weights.empty()) continue;
    ASSERT_EQ(std::memcmp(entry.weights, run.weights.data(), run.weights.size() * sizeof(double)), 0)
        << srcSize << " to " << dstSize << ", entry " << i;
  }
}

TEST(WeightsTable, FollowsTheDefinitionForEveryKernelAndSize) {
  const auto kernels = readyKernels();
  atEveryLevel([&] {
    for (const auto& kernel : kernels) {
      for (int dst = -1; dst <= 40; ++dst)
        for (int src = 0; src <= 40; ++src) expectDefinedTable(kernel.get(), dst, src);
      for (const auto& [dst, src] : {std::pair{1, 9973}, {9973, 1}, {997, 1920}, {3, 4001}, {1921, 1079}})
        expectDefinedTable(kernel.get(), dst, src);
    }
  });
  expectDefinedTable(nullptr, 7, 5);
}

TEST(WeightsTable, UnusualKernels) {
  FunctionFilter unusual[] = {{1.3, [](double) { return 0.0; }},
                              {1.3, [](double x) { return -1.0 - x; }},
                              {1.0, [](double x) { return x < 0 ? kNaN : 1.0; }},
                              {2.0, [](double x) { return x < 0 ? 0.0 : kInfinity; }},
                              {2.0, [](double x) { return x < -0.2 ? -0.0 : 3e300; }},
                              {0.0, [](double) { return 1.0; }},
                              {-0.9, [](double) { return 1.0; }},
                              {1e-300, [](double) { return 1.0; }},
                              {40.25, [](double x) { return std::cos(x); }}};
  for (FunctionFilter& filter : unusual)
    for (int dst = 1; dst <= 12; ++dst)
      for (int src = filter.support < 0 ? dst : 1; src <= (filter.support < 0 ? dst : 12); ++src)
        expectDefinedTable(&filter, dst, src);
}

TEST(WeightsTable, ShapeOfAShrinkingTable) {
  FunctionFilter flat(1.0, [](double) { return 1.0; });
  const QAVMMWeightsTable table(&flat, 10, 100);
  EXPECT_EQ(table.windowSize, 21);
  EXPECT_EQ(table.contributions[0].left, 0);
  EXPECT_EQ(table.contributions[0].right, 15);
  EXPECT_EQ(reinterpret_cast<const void*>(&table), reinterpret_cast<const void*>(&table.contributions));
  EXPECT_LT(reinterpret_cast<const char*>(&table.windowSize), reinterpret_cast<const char*>(&table.count));
}

TEST(WeightsTable, WindowsThatCannotBe) {
  for (const double support : {-1.0, -kInfinity, kInfinity, 2e9, 1.1e9, -5e9}) {
    FunctionFilter filter(support, [](double) { return 1.0; });
    EXPECT_THROW(QAVMMWeightsTable(&filter, 3, 3), std::bad_array_new_length) << support;
    EXPECT_EQ(QAVMMWeightsTable(&filter, 0, 3).contributions, nullptr);
  }
  FunctionFilter unknown(kNaN, [](double) { return 1.0; });
  const QAVMMWeightsTable table(&unknown, 2, 2);
  EXPECT_EQ(table.windowSize, 1);
  EXPECT_EQ(table.contributions[1].right, 0);
  FunctionFilter narrow(0.5, [](double) { return 1.0; });
  for (const int size : {-1, -7, std::numeric_limits<int>::min()})
    EXPECT_NO_THROW(QAVMMWeightsTable(nullptr, 3, size)) << size;
}

TEST(WeightsTable, AnExceptionOfTheKernelLeaksNothing) {
  int calls = 0;
  FunctionFilter thrower(2.0, [&](double) { return ++calls > 20 ? throw std::runtime_error("no more") : 1.0; });
  EXPECT_THROW(QAVMMWeightsTable(&thrower, 50, 40), std::runtime_error);
  EXPECT_EQ(calls, 21);
}

TEST(ResamplingKernels, KnownValues) {
  const std::vector<std::pair<double, double>> known[] = {
      {{0.5, 1}, {-0.5, 0}, {0.51, 0}},
      {{-0.25, 0.75}, {1, 0}},
      {{0, 1}, {0.5, 0.5625}, {1, 0}, {1.5, -0.0625}, {-2, 0}},
      {{0, 8.0 / 9}, {1, 1.0 / 18}, {-1.5, -5.0 / 144}},
      {{0, 1}, {1, 0}, {0.5, 0.5731591682507563}},
      {{0, 1}, {0.5, 0.6079271018540267}, {-2, 0}, {2.5, 0.024317084074161065}, {3, 0}},
      {{0, 0.7978845608028654}, {2, 0}},
  };
  const auto kernels = readyKernels();
  for (std::size_t k = 0; k < kernels.size(); ++k)
    for (const auto& [x, value] : known[k]) EXPECT_NEAR(kernels[k]->Evaluate(x), value, 4e-16) << k << " at " << x;
  for (const auto& kernel : kernels) EXPECT_EQ(kernel->Evaluate(kNaN), 0.0);
}

TEST(ResamplingKernels, ValuesAndTheSignsOfZerosAreTheSameAtEveryLevel) {
  const auto kernels = readyKernels();
  std::vector<std::uint64_t> first;
  atEveryLevel([&] {
    std::vector<std::uint64_t> bits;
    for (const auto& kernel : kernels)
      for (double x = -4.0; x <= 4.0; x += 0.01171875)
        bits.push_back(std::bit_cast<std::uint64_t>(kernel->Evaluate(x)));
    if (first.empty()) first = bits;
    EXPECT_EQ(bits, first);
    EXPECT_FALSE(std::signbit(kernels[5]->Evaluate(-1.0)));
    EXPECT_TRUE(std::signbit(kernels[5]->Evaluate(1.0)));
  });
}

}  // namespace
}  // namespace qav::test
