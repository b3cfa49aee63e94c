#include "support/Comparison.h"
#include "support/Scenes.h"

#include <QAVMMIHelperRGBA.h>

#include <cstring>

namespace qav::bench {
namespace {

QAVMMIHelperRGBA& canvas() {
  static QAVMMIHelperRGBA helper(*photographImage(kWidth, kHeight, RGBA8888));
  return helper;
}

QAVMMIHelperRGBA& mazeCanvas() {
  static QAVMMIHelperRGBA& made = []() -> QAVMMIHelperRGBA& {
    auto* image = new QAVPixelImage(kWidth, kHeight, RGBA8888);
    std::memcpy(image->GetPixelsToModify(), maze().data(), maze().size() * 4);
    return *new QAVMMIHelperRGBA(*image);
  }();
  return made;
}

void lines(QAVMMIBrush brush) {
  for (const auto& [x1, y1, x2, y2] : longLines()) canvas().Line(x1, y1, x2, y2, 0xFF0088FFu, brush);
}

// A picture over pixels that stay where they are.
void blend(const std::uint8_t* pixels) {
  static auto* const source = new QAVPixelImage(0, 0, RGBA8888);
  source->ResetPixels(kWidth, kHeight, RGBA8888, const_cast<std::uint8_t*>(pixels), QAVDeallocatePixelsByCaller);
  canvas().Blend(*source, 0, 0);
}

// The weight for which the rounding of single precision matters most often.
const std::uint8_t* withWeight153() {
  static const std::vector<std::uint8_t> pixels = [] {
    std::vector<std::uint8_t> made = photograph(kWidth, kHeight, 4);
    for (std::size_t i = 3; i < made.size(); i += 4) made[i] = 153;
    return made;
  }();
  return pixels.data();
}

[[maybe_unused]] const bool added[] = {
    addOurs("draw 256 lines", 1.7, [] { lines(QAVMMIBrushPixel); }),
    addOurs("draw 256 lines with a 7 x 7 brush", 0, [] { lines(QAVMMIBrushRound7); }),
    addOurs("fill ellipse", 1.2,
            [] {
              constexpr EllipseScene e;
              canvas().Ellipse(e.cx, e.cy, e.rx, e.ry, 0xFF0088FFu, 1);
            }),
    addOurs("fill polygon", 3,
            [] {
              const int count = static_cast<int>(star().size() / 2);
              canvas().FillArea(1, &count, star().data(), 0xFF0088FFu);
            }),
    addOurs("flood fill of a maze", 2.5,
            [] {
              QAVMMIHelperRGBA& helper = mazeCanvas();
              helper.Fill(2, 2, ~helper.Pick(2, 2));
            }),
    addOurs("blend", 0.9, [] { blend(nextBlendSource()); }),
    addOurs("blend, and OVER", 1.5, [] { blend(nextBlendSource()); }),
    addOurs("blend, and arithmetic on whole pictures", 10, [] { blend(nextBlendSource()); }),
    addOurs("blend, all of weight 153", 0, [] { blend(withWeight153()); }),
};

}  // namespace
}  // namespace qav::bench
