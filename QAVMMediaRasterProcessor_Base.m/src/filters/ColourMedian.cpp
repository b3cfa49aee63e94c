#include "filters/ColourMedian.h"

#include "kernels/AlignedArray.h"
#include "kernels/ColourMedian.h"

namespace qav {

void medianOfColours(const PixelSpan& image, Progress& progress) {
  const auto& kernel = kernels::colourMedianKernels();
  const auto width = static_cast<std::size_t>(image.width);
  const std::size_t entries = kernels::ColourRows::entries(width);
  const auto memory = makeAlignedArray<std::uint32_t>(6 * entries);
  for (std::size_t i = 0; i < 6 * entries; ++i) memory[i] = 0;
  const auto entriesOf = [&](std::size_t row) { return &memory[row * entries]; };
  std::uint32_t* const ring[3] = {entriesOf(0), entriesOf(1), entriesOf(2)};
  std::uint32_t* const columns[3] = {entriesOf(3), entriesOf(4), entriesOf(5)};

  unsigned char* row = image.bytes;
  kernel.prepare(row, width, ring[0]);
  for (int y = 0; y < image.height; ++y, row += 3 * width) {
    std::uint32_t* const current = ring[y % 3];
    std::uint32_t* const above = y > 0 ? ring[(y - 1) % 3] : current;
    std::uint32_t* const below = y + 1 < image.height ? ring[(y + 1) % 3] : current;
    if (y + 1 < image.height) kernel.prepare(row + 3 * width, width, below);
    const std::uint32_t* const rows[3] = {above, current, below};
    kernel.median(rows, width, columns, row);
    progress.rowDone();
  }
}

}  // namespace qav
