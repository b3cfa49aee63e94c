#pragma once

#include <QAVMMGenericFilter.h>
#include <QAVMMWeightsTable.h>
#include <QAVPixelImage.h>

#include "resampling/DirectPasses.h"
#include "resampling/Owned.h"

namespace qav {

/// A horizontal pass from image to image, in the fastest way that their sizes, formats and buffers allow. Does nothing
/// where the source's format has no such pass or a buffer is missing.
void resampleRows(QAVPixelImage& src, QAVPixelImage& dst, const PassSizes& sizes, const QAVMMWeightsTable& table);
/// A vertical pass.
void resampleColumns(QAVPixelImage& src, QAVPixelImage& dst, const PassSizes& sizes, const QAVMMWeightsTable& table);

/// Both passes without an intermediate image. Null, and nothing done, for an image whose buffers are not plainly one
/// and the same for reading and writing, for empty sizes, and where both passes would copy.
Owned<QAVPixelImage> scaleAtOnce(QAVPixelImage& src, const PassSizes& sizes, QAVMMGenericFilter* filter,
                                 bool verticalFirst);

}  // namespace qav
