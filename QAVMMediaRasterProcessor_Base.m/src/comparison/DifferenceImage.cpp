#include "comparison/DifferenceImage.h"

#include "comparison/Statistics.h"
#include "formats/Saturate.h"

namespace qav {
namespace {

struct Colour {
  unsigned char red, green, blue;
};

Colour grey(unsigned char value) { return {value, value, value}; }

Colour shadeOf(double difference, double limit) {
  const double share = difference / limit;
  return grey(share <= 1.0 ? byteFrom((1.0 - share) * 255.0) : 0);
}

Colour heatOf(double difference, double limit) {
  const double position = difference * 510.0 / limit;
  if (difference <= limit / 2.0) return {0, byteFrom(position), byteFrom(255.0 - position)};
  if (difference <= limit) return {byteFrom(position - 255.0), byteFrom(510.0 - position), 0};
  return {255, 0, 0};
}

Colour colourOf(double difference, double limit, bool colour) {
  if (difference == 0.0) return grey(255);
  if (difference == kOutlier) return grey(0);
  return colour ? heatOf(difference, limit) : shadeOf(difference, limit);
}

}  // namespace

OwnedImage differenceImage(const double* differences, Extent extent, double limit, bool colour) {
  OwnedImage image(new QAVPixelImage(extent.width, extent.height, RGB888));
  unsigned char* to = image->GetPixelsToModify();
  for (std::size_t i = 0; i < extent.pixels(); ++i) {
    const Colour c = colourOf(differences[i], limit, colour);
    *to++ = c.red;
    *to++ = c.green;
    *to++ = c.blue;
  }
  return image;
}

}  // namespace qav
