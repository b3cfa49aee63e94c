#include <QAVMMediaImageProcessor.h>

#include "operations/Catalogue.h"

namespace qavraster {
namespace {

const Choices kMethods = {
    {"floyd-steinberg", QAVMMIDitherFloydSteinberg},
    {"short-row", QAVMMIDitherShortRow},
    {"jarvis", QAVMMIDitherJarvis},
    {"stucki", QAVMMIDitherStucki},
    {"variable", QAVMMIDitherVariable},
    {"threshold", QAVMMIDitherThreshold},
};

void dither(Context& c, const Values& v) {
  QAVMMediaImageProcessor::SetDitherThreshold(c.setting("threshold").integer(0));
  c.require(QAVMMediaImageProcessor::Dither(*c.image, v.as<QAVMMIDitherType>(0), c.progress, 0, 0));
}

}  // namespace

Family ditheringFamily() {
  return {"Dithering",
          {
              {"dither",
               {choice("METHOD", kMethods)},
               "Turns the picture into black and white, as L8.",
               &dither,
               {"threshold"}},
              {"bitonal",
               {},
               "Converts to one bit a pixel (BitonalRuns); below 128 is black.",
               [](Context& c, const Values&) { c.require(c.image->ConvertToFormat(BitonalRuns)); }},
          },
          {
              {"threshold",
               {integer("LEVEL", 0, 255)},
               "Level that --dither threshold makes white what lies above.",
               {"127"}},
          }};
}

}  // namespace qavraster
