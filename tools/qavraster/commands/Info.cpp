#include <cstdio>

#include "commands/Commands.h"

namespace qavraster {
namespace {

int channelsOf(QAVPixelImageFormat format) {
  switch (format) {
    case L8:
    case BitonalRuns:
      return 1;
    case LA88:
      return 2;
    case RGB888:
    case RGBFloat:
    case RGB161616:
      return 3;
    default:
      return 4;
  }
}

std::string counted(int number, const std::string& what) {
  return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string inspectPicture(const std::string& path, const Settings& settings) {
  const Image image = readImage(path, settings);
  const int channels = channelsOf(image->GetFormat()), bits = image->GetBitsPerPixel();
  return describe(*image) + ", " + counted(channels, "channel") + " of " + counted(bits / channels, "bit") + ", " +
         counted(bits, "bit") + " a pixel";
}

}  // namespace

int showInfo(const Values& values, const Settings& settings) {
  const std::string& path = values.text(0);
  const FileFormat* format = inputFormat(path, settings);
  std::string found = inspectFile(path, format, settings);
  if (found.empty()) found = inspectPicture(path, settings);
  std::printf("%s: %s%s%s\n", path.c_str(), format ? format->name.c_str() : "", format ? ", " : "", found.c_str());
  return 0;
}

}  // namespace qavraster
