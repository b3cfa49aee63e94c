#include "filters/ColourMedian.h"

#include "kernels/AlignedArray.h"
#include "kernels/ColourMedian.h"

namespace qav {

void medianOfColours(const PixelSpan& image, Progress& progress) {
  using kernels::ColourRow;
  const auto& kernel = kernels::colourMedianKernels();
  const auto width = static_cast<std::size_t>(image.width);
  const std::size_t entries = ColourRow::entries(width);
  const auto memory = makeAlignedArray<std::uint32_t>(6 * entries);
  for (std::size_t i = 0; i < 6 * entries; ++i) memory[i] = 0;
  ColourRow ring[3];
  for (std::size_t i = 0; i < 3; ++i) ring[i] = {&memory[2 * i * entries], &memory[(2 * i + 1) * entries]};

  unsigned char* row = image.bytes;
  kernel.prepare(row, width, ring[0]);
  for (int y = 0; y < image.height; ++y, row += 3 * width) {
    const ColourRow& current = ring[y % 3];
    const ColourRow& above = y > 0 ? ring[(y - 1) % 3] : current;
    const ColourRow& below = y + 1 < image.height ? ring[(y + 1) % 3] : current;
    if (y + 1 < image.height) kernel.prepare(row + 3 * width, width, below);
    const ColourRow* const rows[3] = {&above, &current, &below};
    kernel.median(rows, width, row);
    progress.rowDone();
  }
}

}  // namespace qav
