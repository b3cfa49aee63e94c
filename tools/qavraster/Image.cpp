#include "Image.h"

#include "PixelFormats.h"

namespace qavraster {

std::string formatName(QAVPixelImageFormat format) {
  for (const auto& [name, value] : kPixelFormats) {
    if (value == format) return name;
  }
  return "format " + std::to_string(format);
}

std::string describe(const QAVPixelImage& image) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  return std::to_string(width) + " x " + std::to_string(height) + " " + formatName(image.GetFormat());
}

}  // namespace qavraster
