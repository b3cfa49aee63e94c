#pragma once

#include <QAVMMPIPixelColor.h>

namespace qav {

/// The corners of an image sorted into groups of equal colour.
struct CornerGroups {
  QAVMMPIPixelColor* colours;  ///< four, one a group
  int* groupOf;                ///< four, the group of each corner
  int counts[4] = {};

  /// Puts corner `corner` into the first group that has its colour, or into the first empty one.
  void Add(int corner, const QAVMMPIPixelColor& colour);
  /// Brings larger groups forward by exchanging each position with the first of the largest groups behind it.
  void SortBySize();
};

}  // namespace qav
