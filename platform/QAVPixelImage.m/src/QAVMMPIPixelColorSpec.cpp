#include "PixelLayout.h"

#include <QAVMMPIPixelColorSpec.h>
#include <QAVPixelImage.h>

namespace {

bool hasColour(QAVPixelImageFormat format) { return format == BitonalRuns || pixelLayoutOf(format).channels > 0; }

template <QAVPixelImageFormat Format>
QAVMMPIPixelColorSpec* sharedSpec() {
  static QAVMMPIPixelColorSpec* const spec = QAVMMPIPixelColorSpec::CreatePixelColorSpec(Format, nullptr);
  return spec;
}

// One colour specification for all images of a format, made on first use and kept until the process ends.
QAVMMPIPixelColorSpec* sharedSpecOf(QAVPixelImageFormat format) {
  switch (format) {
    case L8:
      return sharedSpec<L8>();
    case LA88:
      return sharedSpec<LA88>();
    case RGB888:
      return sharedSpec<RGB888>();
    case RGBA8888:
      return sharedSpec<RGBA8888>();
    case BitonalRuns:
      return sharedSpec<BitonalRuns>();
    case RGBFloat:
      return sharedSpec<RGBFloat>();
    case RGBAFloat:
      return sharedSpec<RGBAFloat>();
    case RGB161616:
      return sharedSpec<RGB161616>();
    case RGBA16161616:
      return sharedSpec<RGBA16161616>();
    default:
      return nullptr;
  }
}

int kindOf(const QAVMMPIColorSpace* space) { return space ? space->kind : 0; }

}  // namespace

QAVMMPIColorSpace* QAVMMPIColorSpace::CreateColorSpace() { return new QAVMMPIColorSpace; }

// Defined here so that the class has its one table of virtual functions in this library.
QAVMMPIColorSpace::~QAVMMPIColorSpace() = default;

QAVMMPIPixelColorSpec::QAVMMPIPixelColorSpec(QAVPixelImageFormat format, QAVMMPIColorSpace* space) noexcept
    : format_(format), space_(space) {
  if (space_) space_->AddRef();
}

QAVMMPIPixelColorSpec::~QAVMMPIPixelColorSpec() {
  if (space_) space_->Release();
}

QAVMMPIPixelColorSpec* QAVMMPIPixelColorSpec::CreatePixelColorSpec(QAVPixelImageFormat format,
                                                                   QAVMMPIColorSpace* space) {
  return hasColour(format) ? new QAVMMPIPixelColorSpec(format, space) : nullptr;
}

QAVMMPIPixelColorSpec* QAVMMPIPixelColorSpec::BuildOrRetrievePixelColorSpecFromPixelImage(const QAVPixelImage& image) {
  QAVMMPIPixelColorSpec* spec = image.getSpec();
  if (spec) spec->AddRef();
  return spec;
}

bool QAVMMPIPixelColorSpec::UsingFloatFormat(QAVPixelImageFormat format) noexcept {
  return format == RGBFloat || format == RGBAFloat;
}

bool QAVMMPIPixelColorSpec::UsingBaseFormat(QAVPixelImageFormat format) noexcept {
  return format >= L8 && format <= RGBA8888;
}

bool QAVMMPIPixelColorSpec::HasSameSpecThan(const QAVMMPIPixelColorSpec* other) const {
  return other && (other == this || (other->format_ == format_ && kindOf(other->space_) == kindOf(space_)));
}

QAVMMPIPixelColorSpec* QAVPixelImage::getSpec() { return sharedSpecOf(GetFormat()); }
