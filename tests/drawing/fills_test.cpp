#include "drawing/Drawing.h"
#include "support/Test.h"

namespace qav::test {
namespace {

// A mosaic of pieces `across` x `down` pixels, one of `colours` of them in another colour.
std::vector<std::uint32_t> mosaic(int width, int height, unsigned across, unsigned down, unsigned colours,
                                  std::mt19937& random) {
  std::vector<std::uint32_t> pixels, pieces(static_cast<std::size_t>(width));
  for (unsigned y = 0; y < static_cast<unsigned>(height); ++y) {
    if (y % down == 0)
      for (auto& piece : pieces) piece = random() % colours == 0 ? 0xFF000001u : 0xFF000000u;
    for (unsigned x = 0; x < static_cast<unsigned>(width); ++x) pixels.push_back(pieces[x / across]);
  }
  return pixels;
}

TEST(Fill, RecoloursWhatThePlainStackReaches) {
  std::mt19937 random(5);
  atEveryLevel([&] {
    for (int round = 0; round < 600; ++round) {
      const int width = 1 + below(120, random), height = 1 + below(40, random);
      const auto across = static_cast<unsigned>(1 + random() % (round % 2 ? 1 : 40));
      const auto down = static_cast<unsigned>(1 + random() % (round % 2 ? 1 : 9));
      Drawing drawing(width, height, random() % 4, 0);
      drawing.set(mosaic(width, height, across, down, 2 + static_cast<unsigned>(random() % 9), random));
      for (int i = 0; i < 4; ++i) {
        const int x = below(130, random) - 4, y = below(44, random) - 2;
        const std::uint32_t colour = 0xFF000000u + static_cast<std::uint32_t>(random() % 3);
        drawing.helper.Fill(x, y, colour);
        drawing.plain.fill(x, y, colour);
        ASSERT_TRUE(drawing.agrees()) << x << ", " << y;
      }
    }
  });
}

// More runs wait than the stack holds: some are dropped, and always the same ones.
TEST(Fill, DropsWhatTheStackCannotHold) {
  std::mt19937 random(6);
  atEveryLevel([&] {
    for (const int gap : {2, 3}) {
      Drawing drawing(60000, 7, 0, 4);
      for (int x = 0; x < 60000; x += gap) {
        for (const int y : {1, 2, 4, 5}) {
          drawing.helper.Plot(x, y, 8);
          drawing.plain.plot(x, y, 8);
        }
      }
      const int x = below(60000, random);
      drawing.helper.Fill(x, 3, 6);
      drawing.plain.fill(x, 3, 6);
      ASSERT_TRUE(drawing.agrees());
      EXPECT_NE(std::count(drawing.plain.pixels.begin(), drawing.plain.pixels.end(), 4u), 0) << "nothing was dropped";
    }
  });
}

TEST(Fill, StaysInsideAnOutlineWithDiagonalGaps) {
  Drawing drawing(30, 30, 0, 0);
  drawing.helper.Line(5, 0, 29, 24, 1, QAVMMIBrushPixel);
  drawing.helper.Fill(29, 0, 2);
  EXPECT_EQ(drawing.helper.Pick(29, 23), 2u);
  EXPECT_EQ(drawing.helper.Pick(5, 1), 0u);
}

TEST(FillArea, FillsWhatTheRecordsSayWhateverTheVertices) {
  std::mt19937 random(8);
  atEveryLevel([&] {
    for (int round = 0; round < 1500; ++round) {
      Drawing drawing(1 + below(70, random), 1 + below(50, random), random() % 4, 1);
      std::vector<int> counts(1 + random() % 3), points;
      for (int& count : counts) {
        count = 3 + below(round % 50 == 0 ? 40 : 5, random);
        for (int i = 0; i < 2 * count; ++i)
          points.push_back(round % 2 ? randomCoordinate(random) : below(80, random) - 12);
      }
      drawing.helper.FillArea(static_cast<int>(counts.size()), counts.data(), points.data(), 2);
      drawing.plain.fillArea(counts, points.data(), 2);
      ASSERT_TRUE(drawing.agrees()) << ::testing::PrintToString(counts) << ::testing::PrintToString(points);
    }
  });
}

TEST(FillArea, SmallCasesKnownByHand) {
  struct Case {
    const char* what;
    std::vector<int> counts, points;
    const char* expected;  // rows of a 12 x 6 picture, # where drawn
  };
  const Case cases[] = {
      {"two vertices", {2}, {0, 0, 5, 5}, ""},
      {"one polygon of two vertices among others", {3, 2}, {0, 0, 9, 0, 0, 5, 1, 1, 2, 2}, ""},
      {"a triangle", {3}, {0, 0, 4, 0, 0, 4}, "#####.......####........###.........##..........#..."},
      {"wholly above", {3}, {0, -9, 9, -9, 4, -1}, ""},
      {"a square in a square",
       {4, 4},
       {0, 0, 9, 0, 9, 5, 0, 5, 3, 2, 6, 2, 6, 4, 3, 4},
       "##########..##########..##########..####..####..##########..##########.."},
  };
  for (const Case& c : cases) {
    Drawing drawing(12, 6, 0, 0);
    drawing.helper.FillArea(static_cast<int>(c.counts.size()), c.counts.data(), c.points.data(), 1);
    std::string drawn;
    for (int y = 0; y < 6; ++y)
      for (int x = 0; x < 12; ++x) drawn += drawing.helper.Pick(x, y) ? '#' : '.';
    std::string expected = c.expected;
    expected.resize(72, '.');
    EXPECT_EQ(drawn, expected) << c.what;
  }
  Drawing drawing(4, 4, 0, 0);
  drawing.helper.FillArea(0, nullptr, nullptr, 1);
  drawing.helper.FillArea(-1, nullptr, nullptr, 1);
  EXPECT_TRUE(drawing.agrees());
}

}  // namespace
}  // namespace qav::test
