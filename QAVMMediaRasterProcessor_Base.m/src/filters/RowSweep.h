#pragma once

#include "filters/AlignedArray.h"
#include "filters/Progress.h"
#include "formats/PixelSpan.h"
#include "kernels/RowFilter.h"

namespace qav {

/// Runs a 3x3 filter down an image in place. The rows above the first and below the last repeat them. Working memory
/// is the partials of two rows.
class RowSweep {
 public:
  RowSweep(const kernels::RowFilter& filter, const PixelSpan& image)
      : filter_(filter),
        image_(image),
        stride_(static_cast<std::size_t>(image.channels)),
        count_(static_cast<std::size_t>(image.width) * stride_),
        partialBytes_(filter.partialBytes(count_)),
        partials_(makeAlignedArray<unsigned char>(2 * partialBytes_)) {}

  void run(Progress& progress) const {
    unsigned char* current = partials_.get();
    unsigned char* above = current;
    unsigned char* other = current + partialBytes_;
    filter_.prepare(image_.bytes, count_, stride_, current);
    unsigned char* row = image_.bytes;
    for (int y = 1; y < image_.height; ++y, row += count_) {
      filter_.advance(row + count_, count_, stride_, above, current, other, row);
      above = current;
      current = other;
      other = above;
      progress.rowDone();
    }
    filter_.finish(count_, above, current, row);
    progress.rowDone();
  }

 private:
  const kernels::RowFilter& filter_;
  const PixelSpan& image_;
  std::size_t stride_;
  std::size_t count_;
  std::size_t partialBytes_;
  AlignedArray<unsigned char> partials_;
};

}  // namespace qav
