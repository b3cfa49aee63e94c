#include <QAVMMediaImageProcessor.h>

#include <charconv>
#include <cmath>

#include "operations/Catalogue.h"

namespace qavraster {
namespace {

using Processor = QAVMMediaImageProcessor;

Choices filterNames() {
  return {
      {"box", QAVMMIFilterSmoothBox},
      {"light", QAVMMIFilterSmoothLight},
      {"gauss", QAVMMIFilterSmoothGauss},
      {"centre", QAVMMIFilterSmoothCentre},
      {"sharpen-light", QAVMMIFilterSharpenLight},
      {"sharpen-medium", QAVMMIFilterSharpenMedium},
      {"sharpen", QAVMMIFilterSharpen},
      {"sharpen-cross", QAVMMIFilterSharpenCross},
      {"sharpen-strong", QAVMMIFilterSharpenStrong},
      {"sobel", QAVMMIFilterSobel},
      {"prewitt", QAVMMIFilterPrewitt},
      {"isotropic", QAVMMIFilterIsotropic},
      {"prewitt-compass", QAVMMIFilterPrewittCompass},
      {"kirsch", QAVMMIFilterKirsch},
      {"roberts", QAVMMIFilterRoberts},
      {"laplace", QAVMMIFilterLaplace},
      {"sobel-horizontal", QAVMMIFilterSobelHorizontal},
      {"sobel-vertical", QAVMMIFilterSobelVertical},
      {"prewitt-horizontal", QAVMMIFilterPrewittHorizontal},
      {"prewitt-vertical", QAVMMIFilterPrewittVertical},
      {"median", QAVMMIFilterMedian},
      {"minimum", QAVMMIFilterMinimum},
      {"maximum", QAVMMIFilterMaximum},
      {"opening", QAVMMIFilterOpening},
      {"closing", QAVMMIFilterClosing},
  };
}

// Numbers with spaces or commas between them.
std::vector<float> weightsIn(const std::string& text, const Context& context) {
  constexpr const char* separators = " ,\t\n";
  std::vector<float> weights;
  for (std::size_t at = text.find_first_not_of(separators); at != std::string::npos;
       at = text.find_first_not_of(separators, at)) {
    const std::size_t end = std::min(text.find_first_of(separators, at), text.size());
    const std::string word = text.substr(at, end - at);
    const char* const first = word.data() + (word[0] == '+' ? 1 : 0);
    float weight = 0.0f;
    const auto [stop, error] = std::from_chars(first, word.data() + word.size(), weight);
    if (error != std::errc() || stop != word.data() + word.size() || !std::isfinite(weight))
      context.fail("'" + word + "' is no number");
    weights.push_back(weight);
    at = end;
  }
  return weights;
}

void convolve(Context& context, const Values& values) {
  const int size = values.integer(0);
  const std::vector<float> weights = weightsIn(values.text(1), context);
  const auto wanted = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
  if (size % 2 == 0) context.fail("the size of a kernel is odd");
  if (weights.size() != wanted)
    context.fail(std::to_string(weights.size()) + " weights where there should be " + std::to_string(wanted));
  if (context.image->GetFormat() != RGBA8888) context.fail("convert the picture to RGBA8888 first");
  context.require(Processor::LinearConvolveMatrix(*context.image, size, weights.data()));
}

std::vector<Operation> filterOperations() {
  return {
      {"filter",
       {choice("NAME", filterNames())},
       "Runs a 3x3 filter. Edge detectors turn the picture grey first; minimum, maximum, opening and closing need an "
       "L8 picture, median L8 or RGB888.",
       [](Context& c, const Values& v) {
         const int passes = c.setting("passes").integer(0);
         c.require(Processor::Filter(*c.image, v.as<QAVMMIFilterType>(0), passes, c.progress, 1));
       },
       {"passes"}},
      {"convolve",
       {integer("SIZE", 1, 999, "odd"), text("WEIGHTS", "SIZE x SIZE numbers with spaces between them, row by row")},
       "Convolves an RGBA8888 picture with the kernel, divided by the sum of its weights; beyond the edges all is "
       "transparent black. --kernel SIZE WEIGHTS does the same.",
       &convolve},
      {"antialias",
       {integer("LEVEL", 0, 4)},
       "Softens, from 0 (box) to 3 (mostly the centre); 4 is Gaussian as 2 is.",
       [](Context& c, const Values& v) { c.require(Processor::Antialiase(*c.image, v.integer(0), c.progress, 1)); }},
  };
}

Setting passesSetting() {
  return {"passes",
          {integer("COUNT", 1, 10000)},
          "How many times --filter smooths or sharpens; the other filters run once.",
          {"1"}};
}

}  // namespace

Family filterFamily() { return {"Filters", filterOperations(), {passesSetting()}}; }

}  // namespace qavraster
