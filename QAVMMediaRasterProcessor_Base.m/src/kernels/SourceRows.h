#pragma once

#include <cstddef>

namespace qav::kernels {

/// Rows of an image that a pass takes at once.
template <class Sample>
struct SourceRows {
  const Sample* first;
  std::size_t stride;  ///< samples from row to row
  std::size_t count;
  std::size_t pixels;  ///< of each row
  int channels;        ///< 3 or 4
  std::size_t ahead;   ///< samples from these rows to as many that come next; 0 when there are none
  bool room;           ///< whether a fourth sample of the last pixel may be read, whatever it is
};

}  // namespace qav::kernels
