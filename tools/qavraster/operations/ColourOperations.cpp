#include <QAVMMediaImageProcessor.h>

#include "operations/Catalogue.h"

namespace qavraster {
namespace {

using Processor = QAVMMediaImageProcessor;

const Choices kGreyTypes = {
    {"luma", QAVMMIGreyLuma},
    {"green", QAVMMIGreyGreen},
    {"average", QAVMMIGreyAverage},
    {"lightness", QAVMMIGreyLightness},
    {"luma-video", QAVMMIGreyLumaVideo},
    {"luma-coarse", QAVMMIGreyLumaCoarse},
    {"antialiased", QAVMMIGreyAntialiased},
    {"0", QAVMMIGreyLuma},
    {"1", QAVMMIGreyGreen},
    {"2", QAVMMIGreyAverage},
    {"3", QAVMMIGreyLightness},
    {"4", QAVMMIGreyLumaVideo},
    {"5", QAVMMIGreyLumaAgain},
    {"6", QAVMMIGreyLumaCoarse},
    {"7", QAVMMIGreyAntialiased},
};

const Choices kMirrorTypes = {
    {"left-right", QAVMMIMirrorLeftRight},
    {"top-bottom", QAVMMIMirrorTopBottom},
    {"both", QAVMMIMirrorBoth},
};

const Choices kMaskTypes = {{"luminance", QAVMMIMaskLuminance}, {"alpha", QAVMMIMaskAlpha}};

// The mask may be any picture of the same size; the library wants both as RGBA.
void mask(Context& c, const Values& v) {
  const Image picture = c.read(v.text(0));
  int size[2] = {}, wanted[2] = {};
  picture->GetSize(size[0], size[1]);
  c.image->GetSize(wanted[0], wanted[1]);
  if (size[0] != wanted[0] || size[1] != wanted[1])
    c.fail("the mask has another size than the picture: " + describe(*picture));
  c.require(picture->ConvertToFormat(RGBA8888));
  c.require(c.image->ConvertToFormat(RGBA8888));
  c.replace(Processor::Mask(*c.image, *picture, c.setting("mask-type").as<QAVMMIMaskType>(0), c.progress));
}

}  // namespace

Family colourFamily() {
  return {"Tone, grey, mirror and mask",
          {
              {"stretch",
               {},
               "Stretches each selected channel so that its extremes become 0 and 255.",
               [](Context& c, const Values&) {
                 c.require(Processor::StretchHistogram(*c.image, c.channels(), c.progress, 1));
               }},
              {"grey",
               {choice("FORMULA", kGreyTypes)},
               "Makes a colour picture L8. 'antialiased' is for BitonalRuns pictures.",
               [](Context& c, const Values& v) {
                 c.require(Processor::Grey(*c.image, v.as<QAVMMIGreyType>(0), c.progress, 1));
               }},
              {"mirror",
               {choice("DIRECTION", kMirrorTypes)},
               "Mirrors the picture.",
               [](Context& c, const Values& v) {
                 c.require(Processor::Mirror(*c.image, v.as<QAVMMIMirrorType>(0), c.progress, 1));
               }},
              {"mask",
               {file("MASK")},
               "Weakens the picture's alpha by another picture of the same size.",
               &mask,
               {"mask-type"}},
          },
          {
              {"mask-type",
               {choice("TYPE", kMaskTypes)},
               "What of the mask counts: luminance times alpha, or whether there is alpha.",
               {"luminance"}},
          }};
}

}  // namespace qavraster
