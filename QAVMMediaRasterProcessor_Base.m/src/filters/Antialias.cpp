#include <QAVMMediaImageProcessor.h>

#include "filters/ChangedCopy.h"

namespace {

QAVMMIFilterType filterOfLevel(int level) {
  constexpr QAVMMIFilterType filters[] = {QAVMMIFilterSmoothBox, QAVMMIFilterSmoothLight, QAVMMIFilterSmoothGauss,
                                          QAVMMIFilterSmoothCentre};
  return level >= 0 && level < 4 ? filters[level] : QAVMMIFilterGauss;
}

}  // namespace

HRESULT QAVMMediaImageProcessor::Antialiase(QAVPixelImage& image, int level, void (*progress)(float),
                                            unsigned char flag) {
  return Filter(image, filterOfLevel(level), 1, progress, flag);
}

QAVPixelImage* QAVMMediaImageProcessor::CreateAntialiased(const QAVPixelImage& image, int level,
                                                          void (*progress)(float)) {
  return qav::changedCopy(image, [&](QAVPixelImage& copy) { return Antialiase(copy, level, progress, 1); });
}
