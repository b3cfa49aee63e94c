#pragma once

#include "filters/Progress.h"
#include "formats/PixelSpan.h"
#include "kernels/AlignedArray.h"
#include "kernels/RowFilter.h"

namespace qav {

/// Runs a 3x3 filter down an image in place. The rows above the first and below the last repeat them. Working memory
/// is the partials of two rows.
class RowSweep {
 public:
  RowSweep(const kernels::RowFilter& filter, const PixelSpan& image)
      : filter_(filter),
        image_(image),
        shape_(image.bytes, static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.channels),
               static_cast<std::size_t>(image.channels)),
        partialBytes_(filter.partialBytes(shape_)),
        partials_(makeAlignedArray<unsigned char>(2 * partialBytes_)) {}

  void run(Progress& progress) const {
    unsigned char* current = partials_.get();
    unsigned char* above = current;
    unsigned char* other = current + partialBytes_;
    filter_.prepare(image_.bytes, shape_, current);
    unsigned char* row = image_.bytes;
    for (int y = 1; y < image_.height; ++y, row += shape_.count) {
      filter_.advance(row + shape_.count, shape_, above, current, other, row);
      above = current;
      current = other;
      other = above;
      progress.rowDone();
    }
    filter_.finish(shape_, above, current, row);
    progress.rowDone();
  }

 private:
  const kernels::RowFilter& filter_;
  const PixelSpan& image_;
  kernels::RowShape shape_;
  std::size_t partialBytes_;
  AlignedArray<unsigned char> partials_;
};

}  // namespace qav
