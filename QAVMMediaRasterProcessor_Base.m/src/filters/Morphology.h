#pragma once

#include <QAVPixelImage.h>
#include <QAVResult.h>

namespace qav {

/// Every pixel of an `L8` image becomes the smallest of its 3x3 neighbourhood; edge pixels are repeated outward.
/// E_FAIL for another format, an empty image, or one that cannot be changed. Progress runs from 0 by 1 / height a row
/// to 1.
HRESULT MinFilter3x3(QAVPixelImage& image, void (*progress)(float));
/// The same with the largest.
HRESULT MaxFilter3x3(QAVPixelImage& image, void (*progress)(float));

}  // namespace qav
