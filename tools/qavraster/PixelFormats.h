#pragma once

#include <QAVPixelImageFormat.h>

namespace qavraster {

struct NamedPixelFormat {
  const char* name;
  QAVPixelImageFormat format;
};

/// The formats that hold pixels.
inline constexpr NamedPixelFormat kPixelFormats[] = {
    {"L8", L8},
    {"LA88", LA88},
    {"RGB888", RGB888},
    {"RGBA8888", RGBA8888},
    {"BitonalRuns", BitonalRuns},
    {"RGBFloat", RGBFloat},
    {"RGBAFloat", RGBAFloat},
    {"RGB161616", RGB161616},
    {"RGBA16161616", RGBA16161616},
};

}  // namespace qavraster
