#include <QAVMMIHelperRGBA.h>

#include "drawing/Canvas.h"
#include "kernels/Blend.h"

#include <algorithm>

namespace {

// What a source side of `length` pixels, placed at `position`, shares with a target side.
struct Overlap {
  std::int64_t source;
  std::int64_t target;
  std::int64_t count;
};

Overlap overlap(std::int64_t position, std::int64_t length, std::int64_t targetLength) {
  const std::int64_t target = std::max<std::int64_t>(position, 0);
  return {target - position, target, std::min(position + length, targetLength) - target};
}

bool liesOutside(std::int64_t position, std::int64_t length, std::int64_t targetLength) {
  return position >= targetLength || position + length < 1;
}

}  // namespace

HRESULT QAVMMIHelperRGBA::Blend(QAVPixelImage& source, int x, int y) {
  if (!attached_ || source.GetFormat() != RGBA8888) return E_FAIL;
  const unsigned char* const from = source.GetPixelsToRead();
  if (!from || &source == &image_) return E_FAIL;
  int width = 0, height = 0;
  source.GetSize(width, height);
  if (liesOutside(x, width, width_) || liesOutside(y, height, height_)) return E_FAIL;
  const Overlap columns = overlap(x, width, width_), rows = overlap(y, height, height_);
  if (columns.count < 1) return S_OK;
  const qav::Canvas target = canvas();
  const auto& kernels = qav::kernels::blendKernels();
  for (std::int64_t row = 0; row < rows.count; ++row)
    kernels.blendRow(target.at(columns.target, rows.target + row),
                     from + 4 * ((rows.source + row) * width + columns.source),
                     static_cast<std::size_t>(columns.count));
  return S_OK;
}
