#include "drawing/Drawing.h"
#include "support/Test.h"

namespace qav::test {
namespace {

struct Arguments {
  int at[4];  // x, y, and those of an end
  int brush, filled, rx, ry;
};

Arguments randomArguments(std::mt19937& random) {
  Arguments a{};
  for (int& c : a.at) c = randomCoordinate(random);
  // Every now and then a coordinate repeats: horizontal, vertical, empty.
  if (random() % 4 == 0) a.at[2 + random() % 2] = a.at[random() % 2];
  a.brush = below(15, random) - 1;
  a.filled = below(2, random);
  for (int* const radius : {&a.rx, &a.ry}) *radius = random() % 8 == 0 ? below(3000, random) : below(70, random) - 4;
  return a;
}

// Each draws the same with both.
struct Primitive {
  const char* name;
  void (*draw)(Drawing&, std::uint32_t, const Arguments&);
};

const Primitive kPrimitives[] = {
    {"HLine",
     [](Drawing& d, std::uint32_t colour, const Arguments& a) {
       d.helper.HLine(a.at[0], a.at[1], a.at[2], colour);
       d.plain.hline(a.at[0], a.at[1], a.at[2], colour);
     }},
    {"Line",
     [](Drawing& d, std::uint32_t colour, const Arguments& a) {
       const int brush = a.filled ? a.brush : 0;
       d.helper.Line(a.at[0], a.at[1], a.at[2], a.at[3], colour, static_cast<QAVMMIBrush>(brush));
       d.plain.line(a.at[0], a.at[1], a.at[2], a.at[3], colour, brush);
     }},
    {"Brush and Plot",
     [](Drawing& d, std::uint32_t colour, const Arguments& a) {
       d.helper.Brush(a.at[0], a.at[1], colour, static_cast<QAVMMIBrush>(a.brush));
       d.plain.stamp(a.at[0], a.at[1], colour, a.brush);
       d.helper.Plot(a.at[1], a.at[0], ~colour);
       d.plain.plot(a.at[1], a.at[0], ~colour);
     }},
    {"Rectangle",
     [](Drawing& d, std::uint32_t colour, const Arguments& a) {
       const int *c = a.at, flag = a.filled;
       if (a.brush % 2)
         d.helper.Rectangle(c[0], c[1], c[2], c[3], colour, static_cast<unsigned char>(flag));
       else
         d.helper.Draw({0, c[0] + (c[0] < 0 ? -.9 : .9), c[1] * 1.0, c[2] * 1.0, c[3] * 1.0, colour,
                        static_cast<unsigned char>(2 * flag)});
       d.plain.rectangle(c[0], c[1], c[2], c[3], colour, flag != 0);
     }},
    {"Ellipse",
     [](Drawing& d, std::uint32_t colour, const Arguments& a) {
       d.helper.Ellipse(a.at[0], a.at[1], a.rx, a.ry, colour, static_cast<unsigned char>(a.filled));
       d.plain.ellipse(a.at[0], a.at[1], a.rx, a.ry, colour, a.filled != 0);
     }},
};

TEST(Primitives, DrawThePixelsOfTheirDefinitionsWhateverTheCoordinates) {
  std::mt19937 random(11);
  atEveryLevel([&] {
    for (int round = 0; round < 60; ++round) {
      Drawing drawing(1 + below(70, random), 1 + below(50, random), random() % 5, 7);
      for (int i = 0; i < 90; ++i) {
        const Primitive& primitive = kPrimitives[static_cast<std::size_t>(i) % std::size(kPrimitives)];
        const Arguments a = randomArguments(random);
        primitive.draw(drawing, static_cast<std::uint32_t>(random()), a);
        ASSERT_TRUE(drawing.agrees()) << primitive.name << ::testing::PrintToString(a.at) << a.brush << ", " << a.filled
                                      << ", " << a.rx << ", " << a.ry;
      }
    }
  });
}

// Every small radius, and pairs that take the walk beyond 32 and beyond 64 bits.
TEST(Ellipse, FollowsTheWalkForEveryRadius) {
  std::vector<std::pair<int, int>> radii = {
      {1024, 1024},  {1500, 3},      {3, 1500},      {5000000, 30},          {2000000, 400000}, {1048577, 20},
      {20, 1048577}, {0, INT32_MIN}, {INT32_MIN, 9}, {INT32_MIN, INT32_MIN}, {3000000, 0}};
  for (int rx = -2; rx < 40; ++rx)
    for (int ry = -2; ry < 40; ++ry) radii.emplace_back(rx, ry);
  for (const auto& [rx, ry] : radii) {
    for (const int filled : {0, 1}) {
      Drawing drawing(90, 85, 0, 1);
      const int cx = rx > 45 ? 45 - rx : 45;
      drawing.helper.Ellipse(cx, 40, rx, ry, 2, static_cast<unsigned char>(filled));
      drawing.plain.ellipse(cx, 40, rx, ry, 2, filled != 0);
      ASSERT_TRUE(drawing.agrees()) << rx << " by " << ry << ", filled " << filled;
    }
  }
}

TEST(Line, DrawsWhatIsVisibleOfAnEndlessOneAtOnce) {
  Drawing drawing(100, 20, 0, 1);
  for (int i = 0; i < 20000; ++i) drawing.helper.Line(-2000000000, 5, 2000000000, 7, 2, QAVMMIBrushPixel);
  drawing.plain.line(-2000000000, 5, 2000000000, 7, 2, 0);
  EXPECT_TRUE(drawing.agrees());
  EXPECT_EQ(drawing.helper.Pick(0, 6), 2u);
  drawing.helper.LineBrush(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX, 3, QAVMMIBrushSpray12);
  drawing.plain.line(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX, 3, 12);
  EXPECT_TRUE(drawing.agrees());
}

TEST(Primitives, SmallCasesKnownByHand) {
  Drawing drawing(100, 10, 0, 0);
  QAVMMIHelperRGBA& helper = drawing.helper;
  const auto count = [&](std::uint32_t colour) {
    int n = 0;
    for (int y = 0; y < 10; ++y)
      for (int x = 0; x < 100; ++x) n += helper.Pick(x, y) == colour;
    return n;
  };
  helper.HLine(3, 5, 5, 1);
  helper.Rectangle(0, 5, 9, 5, 1, 1);
  helper.Brush(50, 5, 1, static_cast<QAVMMIBrush>(13));
  EXPECT_EQ(count(1), 0);
  helper.HLine(3, -10, 1000, 2);
  EXPECT_EQ(count(2), 100);
  helper.HLine(3, 7, 2, 3);
  EXPECT_EQ(count(3), 6);
  helper.Line(0, 0, 3, 1, 4, QAVMMIBrushPixel);
  EXPECT_TRUE(helper.Pick(0, 0) == 4 && helper.Pick(1, 0) == 4 && helper.Pick(2, 1) == 4 && helper.Pick(3, 1) == 4);
  helper.Line(50, 6, 50, 6, 5, QAVMMIBrushSquare5);
  EXPECT_EQ(count(5), 25);
  helper.Rectangle(0, 9, 9, 9, 6, 0);
  EXPECT_EQ(count(6), 10);
  EXPECT_EQ(helper.Pick(-1, 3) | helper.Pick(100, 3) | helper.Pick(0, -1) | helper.Pick(0, 10), 0u);
}

}  // namespace
}  // namespace qav::test
