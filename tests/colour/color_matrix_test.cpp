#include <QAV5X5ColorMatrix.h>

#include "support/Checks.h"
#include "support/Test.h"

namespace qav::test {
namespace {

QAVRawColldouble collection(const std::vector<double>& values) {
  QAVRawColldouble result;
  for (const double value : values) result.Append(value);
  return result;
}

std::vector<double> valuesOf(const QAVRawColldouble& values) {
  std::vector<double> result;
  for (int i = 1; i <= values.Size(); ++i) result.push_back(values[i]);
  return result;
}

std::vector<double> randomValues(std::size_t count, std::mt19937& random) {
  std::vector<double> values(count);
  for (double& value : values) value = std::uniform_real_distribution<double>(-3, 3)(random);
  return values;
}

std::vector<double> elements(const QAV5X5ColorMatrix& matrix) {
  std::vector<double> result;
  for (int row = 0; row < 5; ++row)
    for (int column = 0; column < 5; ++column) result.push_back(matrix.Get(row, column));
  return result;
}

std::vector<double> product(const QAV5X5ColorMatrix& matrix, QAVRawColldouble in, std::vector<double> start) {
  QAVRawColldouble out = collection(start);
  EXPECT_EQ(matrix.MatMul(in, out), 0);
  return valuesOf(out);
}

TEST(ColorMatrix, InitializeTakesTheFirst25OrNothing) {
  std::mt19937 random(31);
  QAV5X5ColorMatrix matrix;
  const std::vector<double> identity = elements(matrix);
  for (std::size_t i = 0; i < 25; ++i) EXPECT_EQ(identity[i], i % 6 == 0 ? 1.0 : 0.0);
  for (const std::size_t count : {24u, 25u, 26u}) {
    const auto values = randomValues(count, random);
    const auto before = elements(matrix);
    EXPECT_EQ(matrix.Initialize(collection(values)), count < 25 ? -1 : 0);
    EXPECT_EQ(elements(matrix), count < 25 ? before : std::vector<double>(values.begin(), values.begin() + 25));
  }
  QAVRawColldouble out = collection({7, 8, 9});
  matrix.GetCoef(out);
  ASSERT_EQ(out.Size(), 28);
  EXPECT_EQ(out[3], 9.0);
  EXPECT_EQ(out[4], matrix.Get(0, 0));
  EXPECT_EQ(out[28], matrix.Get(4, 4));

  QAV5X5ColorMatrix& self = matrix;
  const auto kept = elements(matrix);
  matrix = self;
  EXPECT_EQ(elements(matrix), kept);
  matrix.InitializeToIdentityMatrix();
  EXPECT_EQ(elements(matrix), identity);
}

TEST(ColorMatrix, A3x3FillsTheUpperLeftAlone) {
  QAV5X5ColorMatrix matrix;
  matrix.Initialize(collection(std::vector<double>(25, 5)));
  const double coefficients[9] = {1, 2, 3, 4, 6, 7, 8, 9, 10};
  matrix.Initialize(QAVMath3x3Matrix(coefficients));
  for (int row = 0; row < 5; ++row)
    for (int column = 0; column < 5; ++column)
      EXPECT_EQ(matrix.Get(row, column), row < 3 && column < 3 ? coefficients[3 * row + column] : 5.0);
}

TEST(ColorMatrix, GetReportsTheFirstWrongIndexAndGoesOn) {
  const QAV5X5ColorMatrix matrix;
  const std::string file = "QAVMMediaRasterProcessor_Base.m/src/QAV5X5ColorMatrix";
  const std::string row = "TRUE iRow < 5 && iRow >= 0 " + file + ":121";
  const std::string column = "TRUE iCol < 5 && iCol >= 0 " + file + ":122";
  const struct {
    int row, column;
    std::vector<std::string> reports;
  } cases[] = {{5, 0, {row}}, {-1, 4, {row}}, {0, -1, {column}}, {4, 5, {column}}, {9, 9, {row}}, {4, 4, {}}};
  for (const auto& c : cases) {
    const CheckRecorder recorder;
    EXPECT_EQ(matrix.Get(c.row, c.column), c.reports.empty() ? 1.0 : -1.0);
    EXPECT_EQ(recorder.reports(), c.reports) << c.row << " " << c.column;
  }
}

TEST(ColorMatrix, MatMulSumsInOrder) {
  std::mt19937 random(32);
  for (int round = 0; round < 300; ++round) {
    QAV5X5ColorMatrix matrix;
    const auto m = randomValues(25, random), in = randomValues(5 + random() % 2, random);
    matrix.Initialize(collection(m));
    std::vector<double> expected = {0, 0, 0, 0, 0, 77};
    for (std::size_t r = 0; r < 5; ++r)
      for (std::size_t c = 0; c < 5; ++c) expected[r] += m[5 * r + c] * in[c];
    EXPECT_EQ(product(matrix, collection(in), {9, 9, 9, 9, 9, 77}), expected);
  }
  EXPECT_EQ(product(QAV5X5ColorMatrix(), collection({10, 20, 30, 40, 1}), {0, 0, 0, 0, 0}),
            (std::vector<double>{10, 20, 30, 40, 1}));
}

TEST(ColorMatrix, ShortCollectionsAndACollectionMultipliedIntoItself) {
  const CheckRecorder recorder;
  const QAV5X5ColorMatrix matrix;
  QAVRawColldouble four = collection({1, 2, 3, 4}), alsoFour = collection({5, 6, 7, 8});
  EXPECT_EQ(matrix.MatMul(four, alsoFour), -1);
  EXPECT_EQ(valuesOf(alsoFour), (std::vector<double>{5, 6, 7, 8}));
  EXPECT_EQ(product(matrix, four, {9, 9, 9, 9, 9}), (std::vector<double>{1, 2, 3, 4, 0}));
  EXPECT_EQ(product(matrix, collection({1, 2, 3, 4, 5}), {9, 9}), (std::vector<double>{1, 2}));
  QAVRawColldouble same = collection({1, 2, 3, 4, 5});
  EXPECT_EQ(matrix.MatMul(same, same), 0);
  EXPECT_EQ(valuesOf(same), std::vector<double>(5, 0.0));
  EXPECT_TRUE(recorder.reports().empty());
}

}  // namespace
}  // namespace qav::test
