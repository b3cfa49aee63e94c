#include "PixelFormats.h"
#include "operations/Catalogue.h"

namespace qavraster {
namespace {

Choices formatChoices() {
  Choices choices;
  for (const auto& [name, format] : kPixelFormats) choices.emplace_back(name, format);
  return choices;
}

}  // namespace

Family pixelFormatFamily() {
  return {"Pixel format",
          {
              {"convert",
               {choice("FORMAT", formatChoices())},
               "Converts to another pixel format.",
               [](Context& c, const Values& v) { c.require(c.image->ConvertToFormat(v.as<QAVPixelImageFormat>(0))); }},
          }};
}

}  // namespace qavraster
