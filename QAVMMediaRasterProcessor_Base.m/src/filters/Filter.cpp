#include <QAVMMediaImageProcessor.h>

#include "filters/ChangedCopy.h"
#include "filters/ColourMedian.h"
#include "filters/Morphology.h"
#include "filters/RowSweep.h"
#include "kernels/Gradient.h"
#include "kernels/Kernel3x3.h"
#include "kernels/Rank.h"

namespace {

using namespace qav;
using kernels::RowFilter;
using Report = void (*)(float);

const RowFilter* kernelFilter(QAVMMIFilterType type) {
  const auto& filters = kernels::kernel3x3Kernels();
  switch (type) {
    case QAVMMIFilterSmoothBox:
      return &filters.box;
    case QAVMMIFilterSmoothLight:
      return &filters.light;
    case QAVMMIFilterSmoothGauss:
    case QAVMMIFilterGauss:
      return &filters.gauss;
    case QAVMMIFilterSmoothCentre:
      return &filters.centre;
    case QAVMMIFilterSharpenLight:
      return &filters.sharpenLight;
    case QAVMMIFilterSharpenMedium:
      return &filters.sharpenMedium;
    case QAVMMIFilterSharpen:
      return &filters.sharpen;
    case QAVMMIFilterSharpenCross:
      return &filters.sharpenCross;
    case QAVMMIFilterSharpenStrong:
      return &filters.sharpenStrong;
    default:
      return nullptr;
  }
}

const RowFilter* edgeKernelFilter(QAVMMIFilterType type) {
  const auto& filters = kernels::kernel3x3Kernels();
  switch (type) {
    case QAVMMIFilterLaplace:
      return &filters.laplace;
    case QAVMMIFilterSobelHorizontal:
      return &filters.sobelRows;
    case QAVMMIFilterSobelVertical:
      return &filters.sobelColumns;
    case QAVMMIFilterPrewittHorizontal:
      return &filters.prewittRows;
    case QAVMMIFilterPrewittVertical:
      return &filters.prewittColumns;
    default:
      return nullptr;
  }
}

const RowFilter* gradientFilter(QAVMMIFilterType type) {
  const auto& filters = kernels::gradientKernels();
  switch (type) {
    case QAVMMIFilterSobel:
      return &filters.sobel;
    case QAVMMIFilterPrewitt:
      return &filters.prewitt;
    case QAVMMIFilterIsotropic:
      return &filters.isotropic;
    case QAVMMIFilterPrewittCompass:
      return &filters.prewittCompass;
    case QAVMMIFilterKirsch:
      return &filters.kirsch;
    case QAVMMIFilterRoberts:
      return &filters.roberts;
    default:
      return nullptr;
  }
}

HRESULT runPasses(QAVPixelImage& image, const RowFilter& filter, int passes, Report report) {
  const PixelSpan span = writablePixels(image);
  if (!span.bytes || span.pixels == 0) return E_FAIL;
  const RowSweep sweep(filter, span);
  Progress progress(report, static_cast<float>(passes) / static_cast<float>(span.height));
  for (int pass = 0; pass < passes; ++pass) sweep.run(progress);
  progress.finished();
  return S_OK;
}

// The image stays grey whatever comes of the filtering.
HRESULT runOnGrey(QAVPixelImage& image, const RowFilter& filter, int passes, Report report) {
  image.ConvertToFormat(L8);
  return image.GetFormat() == L8 ? runPasses(image, filter, passes, report) : E_FAIL;
}

HRESULT median(QAVPixelImage& image, Report report) {
  const QAVPixelImageFormat format = image.GetFormat();
  if (format == L8) return runPasses(image, kernels::rankKernels().median, 1, report);
  if (format != RGB888) return E_NOTIMPL;
  const PixelSpan span = writablePixels(image);
  if (!span.bytes || span.pixels == 0) return E_FAIL;
  Progress progress(report, 1.0f / static_cast<float>(span.height));
  medianOfColours(span, progress);
  progress.finished();
  return S_OK;
}

using Morphology = HRESULT (*)(QAVPixelImage&, Report);

HRESULT inTurn(QAVPixelImage& image, Morphology first, Morphology second, Report report) {
  const HRESULT status = first(image, report);
  return SUCCEEDED(status) ? second(image, report) : status;
}

HRESULT rankOrMorphology(QAVPixelImage& image, QAVMMIFilterType type, Report report) {
  switch (type) {
    case QAVMMIFilterMedian:
      return median(image, report);
    case QAVMMIFilterMinimum:
      return MinFilter3x3(image, report);
    case QAVMMIFilterMaximum:
      return MaxFilter3x3(image, report);
    case QAVMMIFilterOpening:
      return inTurn(image, &MinFilter3x3, &MaxFilter3x3, report);
    case QAVMMIFilterClosing:
      return inTurn(image, &MaxFilter3x3, &MinFilter3x3, report);
    default:
      return E_NOTIMPL;
  }
}

}  // namespace

HRESULT QAVMMediaImageProcessor::Filter(QAVPixelImage& image, QAVMMIFilterType type, int passes,
                                        void (*progress)(float), unsigned char) {
  if (passes <= 0) return E_FAIL;
  if (const RowFilter* filter = kernelFilter(type)) return runPasses(image, *filter, passes, progress);
  if (const RowFilter* filter = edgeKernelFilter(type)) return runOnGrey(image, *filter, passes, progress);
  if (const RowFilter* filter = gradientFilter(type)) return runOnGrey(image, *filter, 1, progress);
  return rankOrMorphology(image, type, progress);
}

QAVPixelImage* QAVMMediaImageProcessor::CreateFiltered(const QAVPixelImage& image, QAVMMIFilterType type, int passes,
                                                       void (*progress)(float)) {
  return qav::changedCopy(image, [&](QAVPixelImage& copy) { return Filter(copy, type, passes, progress, 1); });
}
