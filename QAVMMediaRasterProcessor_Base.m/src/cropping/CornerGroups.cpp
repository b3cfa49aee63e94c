#include "cropping/CornerGroups.h"

#include <algorithm>
#include <utility>

namespace qav {

void CornerGroups::Add(int corner, const QAVMMPIPixelColor& colour) {
  int group = 0;
  while (counts[group] > 0 && !colours[group].HasSameSpecAndColorThan(colour)) ++group;
  if (counts[group] == 0) colours[group] = colour;
  ++counts[group];
  groupOf[corner] = group;
}

void CornerGroups::SortBySize() {
  for (int position = 0; position < 3; ++position) {
    const int largest = static_cast<int>(std::max_element(counts + position, counts + 4) - counts);
    if (largest == position) continue;
    std::swap(colours[position], colours[largest]);
    std::swap(counts[position], counts[largest]);
    for (int corner = 0; corner < 4; ++corner) {
      int& group = groupOf[corner];
      group = group == position ? largest : group == largest ? position : group;
    }
  }
}

}  // namespace qav
