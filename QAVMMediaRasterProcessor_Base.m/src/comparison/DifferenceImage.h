#pragma once

#include "comparison/Comparable.h"

namespace qav {

/// Picture of per-pixel differences up to `limit`: a heat map, or grey from white for 0 to black.
OwnedImage differenceImage(const double* differences, Extent extent, double limit, bool colour);

}  // namespace qav
