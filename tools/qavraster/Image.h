#pragma once

#include <QAVPixelImage.h>

#include <memory>
#include <string>

namespace qavraster {

struct ReleaseReference {
  void operator()(QAVBaseUnknown* object) const { object->Release(); }
};
/// An image whose one reference the program owns.
using Image = std::unique_ptr<QAVPixelImage, ReleaseReference>;

/// "L8", "RGBA8888", ...
std::string formatName(QAVPixelImageFormat format);
/// "640 x 480 RGBA8888".
std::string describe(const QAVPixelImage& image);

}  // namespace qavraster
