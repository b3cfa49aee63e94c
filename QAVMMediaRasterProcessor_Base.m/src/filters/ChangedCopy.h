#pragma once

#include <QAVPixelImage.h>
#include <QAVResult.h>

#include <memory>

namespace qav {

/// A copy of `image` that `change` was applied to, with one reference for the caller. Null when the format has no
/// pixels to filter or `change` fails.
template <class Change>
QAVPixelImage* changedCopy(const QAVPixelImage& image, Change change) {
  const QAVPixelImageFormat format = image.GetFormat();
  if (format == BitonalRuns || format == NoPixelStorage) return nullptr;
  struct Release {
    void operator()(QAVPixelImage* copy) const { copy->Release(); }
  };
  std::unique_ptr<QAVPixelImage, Release> copy(new QAVPixelImage(image));
  return SUCCEEDED(change(*copy)) ? copy.release() : nullptr;
}

}  // namespace qav
