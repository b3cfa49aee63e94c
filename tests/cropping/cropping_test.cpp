#include <QAVMMICropping.h>

#include "support/Test.h"

namespace qav::test {
namespace {

using Area = std::array<int, 5>;  // left, top, right, bottom, result

// A pixel a letter; rows are separated by blanks.
struct Drawing {
  explicit Drawing(const std::string& text)
      : width(static_cast<int>(std::min(text.find(' '), text.size()))), letters(text) {
    std::erase(letters, ' ');
    height = static_cast<int>(letters.size()) / width;
  }
  int width, height;
  std::string letters;
};

// Colours differ in the last channel alone.
void setPixel(QAVPixelImage& image, std::size_t pixel, unsigned value) {
  const bool sixteen = image.GetSixteenBitPixelsToRead() != nullptr;
  const bool floating = image.GetFloatingPixelsToRead() != nullptr;
  const auto channels = static_cast<std::size_t>(image.GetBytesPerPixel()) / (sixteen ? 2 : floating ? 4 : 1);
  const std::size_t last = (pixel + 1) * channels - 1;
  if (sixteen)
    image.GetSixteenBitPixelsToModify()[last] = static_cast<std::uint16_t>(value << 7);
  else if (floating)
    image.GetFloatingPixelsToModify()[last] = static_cast<float>(value) / 255.0f;
  else
    image.GetPixelsToModify()[last] = static_cast<unsigned char>(value);
}

Image imageOf(const Drawing& drawing, QAVPixelImageFormat format) {
  Image image = makeImage(drawing.width, drawing.height, format);
  for (std::size_t i = 0; i < drawing.letters.size(); ++i)
    setPixel(*image, i, static_cast<unsigned char>(drawing.letters[i]));
  return image;
}

QAVMMPIPixelColor colourAt(const QAVPixelImage& image, int x, int y) {
  QAVMMPIPixelColor colour;
  QAVMMPIPixelImageAccess::GetPixelImageColorAt(image, x, y, colour);
  return colour;
}

Area areaOf(QAVPixelImage& image, const QAVMMPIPixelColor& trim) {
  Area area{-9, -9, -9, -9, 0};
  area[4] = QAVMMICropping::ComputeCroppingAreaFromTrimmingColor(image, trim, area[0], area[1], area[2], area[3]);
  return area;
}

// The walk step by step, one pixel at a time.
Area walk(const QAVPixelImage& image, const QAVMMPIPixelColor& trim) {
  const auto extent = extentOf(image);
  const int width = extent.first, height = extent.second;
  const auto uniform = [&](int x, int y, int pastX, int pastY) {
    for (int row = y; row < pastY; ++row)
      for (int column = x; column < pastX; ++column)
        if (!colourAt(image, column, row).HasSameSpecAndColorThan(trim)) return false;
    return true;
  };
  const auto row = [&](int y) { return uniform(0, y, width, y + 1); };
  const auto column = [&](int x) { return uniform(x, 0, x + 1, height); };
  Area a{0, 0, width - 1, height - 1, 0};
  auto& [left, top, right, bottom, result] = a;
  for (; top < height && row(top); ++top) result = 1;
  if (top == height - 1) return {0, 0, 0, 0, result};
  for (; bottom > top && row(bottom); --bottom) result = 1;
  if (top == bottom) return {0, 0, 0, 0, result};
  for (; left < width - 1 && column(left); ++left) result = 1;
  for (int x = width - 1; left < x && column(width - 1); --x, --right) result = 1;
  return a;
}

TEST(Cropping, AreasWorkedOutByHand) {
  const struct {
    const char* drawing;
    Area expected;
  } cases[] = {
      {"....... .ab.... ..cd.a. .......", {1, 1, 1, 2, 1}},  // the uniform last column moves right down to left
      {"...... .ab... ..cd.a ......", {1, 1, 5, 2, 1}},
      {"... ... ...", {2, 3, 2, 2, 1}},  // nothing but the colour
      {".", {0, 1, 0, 0, 1}},
      {"..", {1, 1, 1, 0, 1}},
      {"a", {0, 0, 0, 0, 0}},
      {".a.", {0, 0, 0, 0, 0}},
      {"... ... ..a", {0, 0, 0, 0, 1}},  // all but the last row
      {"... .a. ...", {0, 0, 0, 0, 1}},  // one row left between two
      {".a. ... ...", {0, 0, 0, 0, 1}},
      {"abc def", {0, 0, 2, 1, 0}},
      {". a b .", {0, 1, 0, 2, 1}},  // one column has no left edge to look for
      {"ab. cd.", {0, 0, 0, 1, 1}},
      {".ab .cd", {1, 0, 2, 1, 1}},
      {"..a ..b", {2, 0, 2, 1, 1}},
  };
  for (const auto& [drawing, expected] : cases) {
    const Image image = imageOf(Drawing(drawing), RGB888);
    const QAVMMPIPixelColor trim = colourAt(*imageOf(Drawing("."), RGB888), 0, 0);
    EXPECT_EQ(areaOf(*image, trim), expected) << drawing;
    EXPECT_EQ(walk(*image, trim), expected) << drawing;
  }
}

TEST(Cropping, AreasOfRandomImagesInEveryFormat) {
  std::mt19937 random(3);
  for (int round = 0; round < 4000; ++round) {
    const QAVPixelImageFormat formats[] = {L8, LA88, RGB888, RGBA8888, RGBFloat, RGBAFloat, RGB161616, RGBA16161616};
    const int width = 1 + below(round % 10 == 0 ? 130 : 9, random);
    const int height = 1 + below(9, random);
    const Image image = makeImage(width, height, formats[random() % 8]);
    const int pixels = width * height;
    for (int marks = below(6, random); marks > 0; --marks)
      setPixel(*image, random() % static_cast<unsigned>(pixels), 1 + random() % 2);
    if (float* samples = image->GetFloatingPixelsToModify(); samples && round % 4 == 0)
      samples[random() % static_cast<unsigned>(pixels)] = round % 8 == 0 ? -0.0f : NAN;
    const QAVMMPIPixelColor trim = colourAt(*image, below(width, random), round % height);
    EXPECT_EQ(areaOf(*image, trim), walk(*image, trim)) << width << " x " << height << ", round " << round;
  }
}

TEST(Cropping, CornersDecideTheColour) {
  const struct {
    const char* corners;  // in the order of the corners: clockwise
    int agreeing;
    const char* groups;
    char trim;  // blank: none
  } cases[] = {
      {"aaaa", 4, "0000", 'a'}, {"aaab", 3, "0001", 'a'}, {"baaa", 3, "1000", 'a'}, {"aabb", 2, "0011", ' '},
      {"abab", 2, "0101", ' '}, {"aabc", 2, "0012", 'a'}, {"baac", 2, "1002", 'a'}, {"bcaa", 2, "2100", 'a'},
      {"abca", 2, "0120", 'a'}, {"abac", 2, "0102", ' '}, {"babc", 2, "0102", ' '}, {"abcd", 1, "0123", ' '},
  };
  for (const QAVPixelImageFormat format : {L8, LA88, RGB888, RGBA8888, RGB161616, RGBA16161616}) {
    for (const auto& [corners, agreeing, groups, trim] : cases) {
      const std::string c = corners;
      const Image image = imageOf(Drawing({c[0], '.', c[1], ' ', c[3], '.', c[2]}), format);
      int group[4] = {9, 9, 9, 9};
      QAVMMPIPixelColor* colours = nullptr;
      EXPECT_EQ(QAVMMICropping::RetrieveCornersColors(*image, group, colours), agreeing) << corners;
      const std::unique_ptr<QAVMMPIPixelColor[]> owner(colours);
      const int places[4][2] = {{0, 0}, {2, 0}, {2, 1}, {0, 1}};
      for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(group[i], groups[i] - '0') << corners << " corner " << i;
        EXPECT_TRUE(colours[group[i]].HasSameSpecAndColorThan(colourAt(*image, places[i][0], places[i][1])));
      }
      QAVMMPIPixelColor found;
      const int decided = QAVMMICropping::EvalTrimmingColorOnCornersStrategy(*image, found);
      EXPECT_EQ(decided, trim != ' ') << corners;
      if (trim == ' ') continue;
      EXPECT_TRUE(found.HasSameSpecAndColorThan(colourAt(*imageOf(Drawing({trim}), format), 0, 0))) << corners;
    }
  }
}

TEST(Cropping, RefusedFormatsAndEmptyImages) {
  for (const QAVPixelImageFormat format : kAllFormats) {
    for (const int width : {0, 3}) {
      const Image image = makeImage(width, 2, format);
      QAVMMICropping cropping(*image);
      EXPECT_EQ(cropping.IsValid(), width > 0 && format != NoPixelStorage);
      int group[4] = {7, 7, 7, 7};
      QAVMMPIPixelColor trim;
      auto* colours = &trim;
      const bool accepted = width > 0 && (format <= RGBA8888 || format >= RGB161616);
      EXPECT_EQ(cropping.RetrieveCornersColors(group, colours), accepted ? 4 : 0) << format;
      EXPECT_EQ(colours != nullptr, accepted);
      delete[] colours;  // as callers do
      EXPECT_EQ(cropping.EvalTrimmingColorOnCornersStrategy(trim), accepted) << format;
      if (cropping.IsValid()) continue;
      EXPECT_EQ(areaOf(*image, trim), (Area{-9, -9, -9, -9, 0}));
      EXPECT_EQ(cropping.HasPixelImageRowSameColorThan_Forward(trim), 0);
    }
  }
}

// Scans go on where the one before has ended: rows in raster order, columns in the last row.
TEST(Cropping, ScansFromThePosition) {
  const Image image = imageOf(Drawing("..... ..... ..a.. ....."), RGBA8888);
  const QAVMMPIPixelColor dot = colourAt(*image, 0, 0), a = colourAt(*image, 2, 2);
  QAVMMICropping forward(*image), backward(*image), down(*image), only(*image);
  EXPECT_EQ(forward.HasPixelImageRowSameColorThan_Forward(dot), 1);
  EXPECT_EQ(forward.HasPixelImageRowSameColorThan_Forward(dot), 1);
  EXPECT_EQ(forward.HasPixelImageRowSameColorThan_Forward(dot), 0);
  EXPECT_EQ(forward.HasPixelImageColumnSameColorThan_Backward(a), 1);
  EXPECT_EQ(forward.HasPixelImageColumnSameColorThan_Backward(a), 0);
  EXPECT_EQ(forward.HasPixelImageRowSameColorThan_Backward(dot), 1);
  EXPECT_EQ(forward.HasPixelImageRowSameColorThan_Backward(dot), 0);
  EXPECT_EQ(forward.HasPixelImageColumnSameColorThan_Forward(a), 0);
  EXPECT_EQ(backward.HasPixelImageRowSameColorThan_Backward(dot), 1);
  EXPECT_EQ(backward.HasPixelImageRowSameColorThan_Backward(a), 0);
  EXPECT_EQ(down.HasPixelImageColumnSameColorThan_Forward(dot), 1);
  EXPECT_EQ(down.HasPixelImageRowSameColorThan_Forward(dot), 1);
  EXPECT_EQ(down.HasPixelImageRowSameColorThan_Forward(dot), 1);
  EXPECT_EQ(only.HasPixelImageRowSameColorThan_Forward(QAVMMPIPixelColor()), 0);
}

// The area's scans end at the last row where that decides, else in the last column: at its top, or where it differs.
TEST(Cropping, ScansFromWhereTheAreaEnds) {
  const struct {
    const char* drawing;
    char colour;
    int row, column;  // from there on, both forward, each by an object of its own
  } cases[] = {{". a .", '.', 1, 1},
               {"... .a. ...", '.', 1, 1},
               {".ab .cd", 'b', 1, 0},
               {".ab .cb", 'b', 1, 1},
               {"...... .ab... ..cd.a ......", '.', 0, 0},
               {"....... .ab.... .......", '.', 1, 1},
               {"a. ..", '.', 1, 1}};
  for (const auto& [drawing, colour, row, column] : cases) {
    const Image image = imageOf(Drawing(drawing), RGB888);
    const char dots[] = {'.', 0}, other[] = {colour, 0};
    const QAVMMPIPixelColor trim = colourAt(*imageOf(Drawing(dots), RGB888), 0, 0);
    const QAVMMPIPixelColor wanted = colourAt(*imageOf(Drawing(other), RGB888), 0, 0);
    int left, top, right, bottom;
    QAVMMICropping rows(*image), columns(*image);
    rows.ComputeCroppingAreaFromTrimmingColor(trim, left, top, right, bottom);
    columns.ComputeCroppingAreaFromTrimmingColor(trim, left, top, right, bottom);
    EXPECT_EQ(rows.HasPixelImageRowSameColorThan_Forward(wanted), row) << drawing;
    EXPECT_EQ(columns.HasPixelImageColumnSameColorThan_Forward(wanted), column) << drawing;
  }
}

}  // namespace
}  // namespace qav::test
