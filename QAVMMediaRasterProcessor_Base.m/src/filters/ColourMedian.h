#pragma once

#include "filters/Progress.h"
#include "formats/PixelSpan.h"

namespace qav {

/// Replaces every pixel of an `RGB888` image, which is not empty, by the median colour of its 3x3 neighbourhood.
void medianOfColours(const PixelSpan& image, Progress& progress);

}  // namespace qav
