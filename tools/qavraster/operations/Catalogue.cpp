#include "operations/Catalogue.h"

#include "Errors.h"

namespace qavraster {

const std::vector<Family>& catalogue() {
  static const std::vector<Family> families = {
      pixelFormatFamily(), pointOperationFamily(), colourFamily(),  filterFamily(),
      ditheringFamily(),   resamplingFamily(),     drawingFamily(), croppingFamily(),
  };
  return families;
}

std::vector<Setting> allSettings() {
  std::vector<Setting> all;
  for (const Family& family : catalogue()) all.insert(all.end(), family.settings.begin(), family.settings.end());
  for (const FileFormat& format : fileFormats()) all.insert(all.end(), format.settings.begin(), format.settings.end());
  return all;
}

Settings presets() {
  Settings settings;
  for (const Setting& setting : allSettings()) {
    if (!setting.preset.empty())
      settings[setting.name] = Values("--" + setting.name, setting.arguments, setting.preset);
  }
  return settings;
}

void Context::require(HRESULT status) const {
  if (FAILED(status)) refuse();
}

void Context::replace(QAVPixelImage* picture) {
  if (!picture) refuse();
  image.reset(picture);
}

void Context::refuse() const {
  throw Refusal(operation + ": not with these arguments and settings for this picture (" + describe(*image) + ")");
}

void Context::fail(const std::string& reason) const {
  throw Failure(operation + ": " + reason + " (" + describe(*image) + ")");
}

}  // namespace qavraster
