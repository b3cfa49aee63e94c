#include "filters/Morphology.h"

#include "filters/RowSweep.h"
#include "kernels/Rank.h"

namespace qav {
namespace {

HRESULT filterOnce(QAVPixelImage& image, const kernels::RowFilter& filter, void (*report)(float)) {
  if (image.GetFormat() != L8) return E_FAIL;
  const PixelSpan span = writablePixels(image);
  if (!span.bytes || span.pixels == 0) return E_FAIL;
  const RowSweep sweep(filter, span);
  Progress progress(report, 1.0f / static_cast<float>(span.height));
  sweep.run(progress);
  progress.finished();
  return S_OK;
}

}  // namespace

HRESULT MinFilter3x3(QAVPixelImage& image, void (*progress)(float)) {
  return filterOnce(image, kernels::rankKernels().minimum, progress);
}

HRESULT MaxFilter3x3(QAVPixelImage& image, void (*progress)(float)) {
  return filterOnce(image, kernels::rankKernels().maximum, progress);
}

}  // namespace qav
