// Draws every brush and every primitive, and writes the picture.
//   drawing [PICTURE.png]
#include <QAVMMIHelperRGBA.h>
#include <QAVPixelImage.h>

#include <cmath>
#include <iterator>
#include <vector>

namespace {

constexpr int kCell = 120, kColumns = 6, kRows = 4;
constexpr unsigned int kInk = 0xFF402010u;  // 0xAABBGGRR: dark blue

constexpr unsigned int kColours[] = {0xFF0070FFu, 0xFFC08030u, 0xFF40A040u, 0xFF4040E0u, 0xFFB050B0u, 0xFF30B0D0u};
unsigned int colour(int i) { return kColours[static_cast<unsigned>(i) % std::size(kColours)]; }

struct Cell {
  int left, top;
  explicit Cell(int number) : left(number % kColumns * kCell), top(number / kColumns * kCell) {}
  int x(int percent) const { return left + percent * kCell / 100; }
  int y(int percent) const { return top + percent * kCell / 100; }
};

// The stamp alone, and lines that it draws.
void showBrush(QAVMMIHelperRGBA& helper, int brush) {
  const Cell cell(brush);
  const auto stamp = static_cast<QAVMMIBrush>(brush);
  helper.Brush(cell.x(22), cell.y(22), kInk, stamp);
  helper.Line(cell.x(15), cell.y(85), cell.x(85), cell.y(60), colour(brush), stamp);
  helper.Line(cell.x(45), cell.y(45), cell.x(85), cell.y(15), colour(brush + 1), stamp);
}

void showStar(QAVMMIHelperRGBA& helper, Cell cell) {
  std::vector<int> points;
  for (int i = 0; i < 5; ++i) {
    points.push_back(cell.x(50 + static_cast<int>(42 * std::sin(i * 4 * 3.14159265 / 5))));
    points.push_back(cell.y(52 - static_cast<int>(42 * std::cos(i * 4 * 3.14159265 / 5))));
  }
  const int count = 5;
  helper.FillArea(1, &count, points.data(), colour(3));
}

void showSquares(QAVMMIHelperRGBA& helper, Cell cell) {
  const int counts[] = {4, 4};
  const int points[] = {cell.x(15), cell.y(15), cell.x(85), cell.y(15), cell.x(85), cell.y(85), cell.x(15), cell.y(85),
                        cell.x(35), cell.y(50), cell.x(50), cell.y(35), cell.x(65), cell.y(50), cell.x(50), cell.y(65)};
  helper.FillArea(2, counts, points, colour(5));
}

// Every pixel of the other picture keeps more of what lies below the further right it stands.
void showBlend(QAVMMIHelperRGBA& helper, Cell cell) {
  const int side = kCell * 7 / 10;
  auto* const fading = new QAVPixelImage(side, side, RGBA8888);
  unsigned char* pixel = fading->GetPixelsToModify();
  for (int i = 0; i < side * side; ++i, pixel += 4) {
    pixel[0] = 255;
    pixel[1] = 112;
    pixel[3] = static_cast<unsigned char>(i % side * 255 / (side - 1));
  }
  helper.Ellipse(cell.x(50), cell.y(50), kCell * 3 / 10, kCell * 45 / 100, colour(2), 1);
  helper.Blend(*fading, cell.x(15), cell.y(15));
  fading->Release();
}

void showShapes(QAVMMIHelperRGBA& helper, int cellNumber) {
  const auto next = [&cellNumber] { return Cell(cellNumber++); };
  Cell cell = next();
  for (int i = 0; i <= 10; ++i) helper.Line(cell.x(50), cell.y(90), cell.x(10 * i), cell.y(10), kInk, QAVMMIBrushPixel);
  cell = next();
  for (int i = 0; i < 20; ++i) helper.HLine(cell.y(10 + 4 * i), cell.x(10 + 2 * i), cell.x(90 - 2 * i), colour(i));
  cell = next();
  helper.Rectangle(cell.x(15), cell.y(15), cell.x(70), cell.y(60), kInk, 0);
  helper.Rectangle(cell.x(40), cell.y(40), cell.x(90), cell.y(85), colour(1), 1);
  cell = next();
  for (int i = 1; i < 5; ++i) helper.Ellipse(cell.x(50), cell.y(50), 12 * i, 60 - 12 * i, colour(i), 0);
  cell = next();
  helper.Ellipse(cell.x(50), cell.y(60), kCell * 4 / 10, kCell / 4, colour(0), 1);
  helper.Circle(cell.x(50), cell.y(30), kCell / 5, colour(4), 1);
  showStar(helper, next());
  showSquares(helper, next());
  cell = next();
  helper.Circle(cell.x(40), cell.y(50), kCell * 3 / 10, kInk, 0);
  helper.Circle(cell.x(60), cell.y(50), kCell * 3 / 10, kInk, 0);
  for (int i = 0; i < 3; ++i) helper.Fill(cell.x(25 + 25 * i), cell.y(50), colour(i));
  showBlend(helper, next());
  cell = next();
  for (int i = 0; i < 1500; ++i) helper.Plot(cell.x(10 + i * 37 % 80), cell.y(10 + i * i % 79), colour(i));
}

}  // namespace

int main(int argc, char** argv) {
  auto* const image = new QAVPixelImage(kColumns * kCell, kRows * kCell, RGBA8888);
  QAVMMIHelperRGBA helper(*image);
  helper.Clear(0xFFFFFFFFu);
  for (int brush = QAVMMIBrushPixel; brush <= QAVMMIBrushSpray12; ++brush) showBrush(helper, brush);
  showShapes(helper, QAVMMIBrushSpray12 + 1);
  for (int i = 0; i <= kColumns; ++i)
    helper.Line(i * kCell, 0, i * kCell, kRows * kCell, 0xFFD0D0D0u, QAVMMIBrushPixel);
  for (int i = 0; i <= kRows; ++i)
    helper.Line(0, i * kCell, kColumns * kCell, i * kCell, 0xFFD0D0D0u, QAVMMIBrushPixel);
  const HRESULT status = image->WriteToFile(argc > 1 ? argv[1] : "drawing.png", "PNG");
  image->Release();
  return FAILED(status) ? 1 : 0;
}
