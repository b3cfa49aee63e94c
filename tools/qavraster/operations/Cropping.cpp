#include <QAVMMICropping.h>

#include <algorithm>

#include "operations/Catalogue.h"

namespace qavraster {
namespace {

struct Area {
  int left = 0, top = 0, right = 0, bottom = 0;
};

// The library's right edge is the last column or, when that has the colour, the left edge; a picture needs the real
// one.
int rightEdge(const QAVPixelImage& image, const QAVMMPIPixelColor& trim, const Area& area) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  QAVMMPIPixelIterator* const iterator = QAVMMPIPixelImageAccess::GetIterator(image);
  int margin = width - 1 - area.left;
  for (int y = area.top; y <= area.bottom; ++y) {
    iterator->GoTo(width - 1, y);
    margin = iterator->CountSameColorLeft(trim, margin);
  }
  iterator->Release();
  return width - 1 - margin;
}

void trimBorder(Context& c, const Values&) {
  QAVMMPIPixelColor trim;
  Area area;
  QAVMMICropping cropping(*c.image);
  const bool found = cropping.EvalTrimmingColorOnCornersStrategy(trim) &&
                     cropping.ComputeCroppingAreaFromTrimmingColor(trim, area.left, area.top, area.right, area.bottom);
  // With no more than one row left there is no area to speak of.
  if (!found || area.top >= area.bottom) return;
  area.right = rightEdge(*c.image, trim, area);
  Image inside(new QAVPixelImage(area.right - area.left + 1, area.bottom - area.top + 1, c.image->GetFormat()));
  c.require(inside->PasteImage(-area.left, -area.top, c.image.get(), 0));
  c.image = std::move(inside);
}

}  // namespace

Family croppingFamily() {
  return {
      "Cropping",
      {{"trim",
        {},
        "Takes away the border of the colour that the corners agree on. Without such a colour, or when no more than "
        "one row would be left, the picture stays as it is.",
        trimBorder}}};
}

}  // namespace qavraster
