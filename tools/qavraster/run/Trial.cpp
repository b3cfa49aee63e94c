#include "run/Trial.h"

#include <algorithm>

#include "Errors.h"
#include "PixelFormats.h"

namespace qavraster {
namespace {

bool takes(const Operation& operation, const Values& values, const Context& context, QAVPixelImageFormat format) {
  int width = 0, height = 0;
  context.image->GetSize(width, height);
  Context trial{Image(new QAVPixelImage(std::min(width, 16), std::min(height, 16), L8)), context.settings, nullptr, ""};
  try {
    trial.require(trial.image->ConvertToFormat(format));
    operation.run(trial, values);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

std::string formatsThatWouldDo(const Operation& operation, const Values& values, const Context& context) {
  std::vector<std::string> names;
  for (const auto& [name, format] : kPixelFormats) {
    if (takes(operation, values, context, format)) names.push_back(name);
  }
  std::string list;
  for (const std::string& name : names)
    list += (&name == &names.front() ? "" : &name == &names.back() ? " or " : ", ") + name;
  return names.empty() ? "" : "; " + list + " would do, as after --convert " + names.front();
}

}  // namespace qavraster
