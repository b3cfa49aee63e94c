#include <QAVMMediaImageProcessor.h>

#include "colour/MirrorPixels.h"

namespace {

HRESULT mirrorPixels(QAVPixelImage& image, QAVMMIMirrorType type) {
  unsigned char* const pixels = image.GetPixelsToModify();
  if (!pixels) return E_FAIL;
  int width = 0, height = 0;
  image.GetSize(width, height);
  const int bytesPerPixel = image.GetBytesPerPixel();
  switch (type) {
    case QAVMMIMirrorLeftRight:
      return qav::ReversePixelsInRows(pixels, width, height, bytesPerPixel);
    case QAVMMIMirrorTopBottom:
      return qav::SwapRows(pixels, std::int64_t{width} * bytesPerPixel, height);
    case QAVMMIMirrorBoth:
      return qav::ReversePixels(pixels, width, height, bytesPerPixel);
    default:
      return E_NOTIMPL;
  }
}

HRESULT mirrorRuns(QAVPixelImage& image, QAVMMIMirrorType type) {
  const bool topBottom = type == QAVMMIMirrorTopBottom || type == QAVMMIMirrorBoth;
  if (topBottom && image.ReverseRowOrder() != 0) return E_FAIL;
  return type == QAVMMIMirrorLeftRight || type == QAVMMIMirrorBoth ? qav::MirrorRunRows(image) : S_OK;
}

}  // namespace

HRESULT QAVMMediaImageProcessor::Mirror(QAVPixelImage& image, QAVMMIMirrorType type, void (*)(float),
                                        unsigned char apply) {
  const QAVPixelImageFormat format = image.GetFormat();
  if (format == NoPixelStorage) return E_FAIL;
  if (type == QAVMMIMirrorNone || !apply) return S_OK;
  return format == BitonalRuns ? mirrorRuns(image, type) : mirrorPixels(image, type);
}
