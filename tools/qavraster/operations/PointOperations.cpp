#include <QAVMMediaImageProcessor.h>

#include "operations/Catalogue.h"

namespace qavraster {
namespace {

using Processor = QAVMMediaImageProcessor;

constexpr int kColour = QAVMMIChannelLuminance | QAVMMIChannelRed | QAVMMIChannelGreen | QAVMMIChannelBlue;

Setting channelSetting() {
  return {"channels",
          {letters("CHANNELS", {{"l", QAVMMIChannelLuminance},
                                {"r", QAVMMIChannelRed},
                                {"g", QAVMMIChannelGreen},
                                {"b", QAVMMIChannelBlue},
                                {"a", QAVMMIChannelAlpha},
                                {"colour", kColour},
                                {"all", kColour | QAVMMIChannelAlpha}})},
          "Channels that the operations after it change. 'colour' is all but alpha.",
          {"colour"}};
}

std::vector<Operation> pointOperations() {
  return {
      {"brightness",
       {number("AMOUNT", -1, 1, "fraction of full scale")},
       "Adds AMOUNT.",
       [](Context& c, const Values& v) {
         c.require(Processor::Brightness(*c.image, v.real(0), c.channels(), c.progress, 1));
       }},
      {"contrast",
       {number("AMOUNT", -1, 1)},
       "Scales about mid-grey, from flat (-1) to thresholding (1).",
       [](Context& c, const Values& v) {
         c.require(Processor::Contrast(*c.image, v.real(0), c.channels(), c.progress, 1));
       }},
      {"gamma",
       {number("GAMMA", 0.0001, 3)},
       "Power curve with the exponent 1/GAMMA: above 1 lightens the middle tones.",
       [](Context& c, const Values& v) {
         c.require(Processor::Gamma(*c.image, v.real(0), c.channels(), c.progress, 1));
       }},
      {"negative",
       {},
       "Inverts.",
       [](Context& c, const Values&) { c.require(Processor::Negative(*c.image, c.channels(), c.progress, 1)); }},
      {"solarize",
       {number("THRESHOLD", 0, 1, "fraction of full scale")},
       "Inverts what lies above THRESHOLD.",
       [](Context& c, const Values& v) {
         c.require(Processor::Solarize(*c.image, v.real(0), c.channels(), c.progress, 1));
       }},
      {"posterize",
       {integer("LEVELS", 2, 255)},
       "Reduces to LEVELS evenly spaced levels.",
       [](Context& c, const Values& v) {
         c.require(Processor::Posterize(*c.image, v.as<unsigned int>(0), c.channels(), c.progress, 1));
       }},
      {"adjust",
       {number("BRIGHTNESS", -1, 1, "fraction of full scale"), number("CONTRAST", -1, 1), number("GAMMA", 0.0001, 3)},
       "Brightness, then contrast, then gamma, in one step.",
       [](Context& c, const Values& v) {
         c.require(Processor::AdjustColor(*c.image, v.real(0), v.real(1), v.real(2), c.channels(), c.progress, 1));
       }},
      {"balance",
       {number("RED", -1, 1, "fraction of full scale"), number("GREEN", -1, 1, "fraction of full scale"),
        number("BLUE", -1, 1, "fraction of full scale")},
       "Adds to red, green and blue apart; for RGB888 and RGBA8888 images.",
       [](Context& c, const Values& v) {
         c.require(Processor::Balance(*c.image, v.real(0), v.real(1), v.real(2), c.progress, 1));
       }},
  };
}

}  // namespace

Family pointOperationFamily() { return {"Point operations", pointOperations(), {channelSetting()}}; }

}  // namespace qavraster
