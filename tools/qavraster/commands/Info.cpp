#include <cstdio>

#include "commands/Commands.h"

namespace qavraster {

int showInfo(const Values& values, const Settings& settings) {
  const Image image = readImage(values.text(0), settings);
  std::printf("%s: %s, %d bits a pixel\n", values.text(0).c_str(), describe(*image).c_str(), image->GetBitsPerPixel());
  return 0;
}

}  // namespace qavraster
