#include <QAVMMIResize.h>

#include "resampling/Owned.h"

#include <QAVMMPIPixelColorSpec.h>
#include <QAVMMPIPixelImageAccess.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>

using qav::Owned;

namespace {

struct Size {
  int width;
  int height;
  friend bool operator==(const Size&, const Size&) = default;
};

// Made on first use and never released.
std::array<QAVMMPIPixelColorSpec*, 4> byteSpecs() {
  static QAVMMPIPixelColorSpec* const l8 = QAVMMPIPixelColorSpec::CreatePixelColorSpec(L8, nullptr);
  static QAVMMPIPixelColorSpec* const la88 = QAVMMPIPixelColorSpec::CreatePixelColorSpec(LA88, nullptr);
  static QAVMMPIPixelColorSpec* const rgb888 = QAVMMPIPixelColorSpec::CreatePixelColorSpec(RGB888, nullptr);
  static QAVMMPIPixelColorSpec* const rgba8888 = QAVMMPIPixelColorSpec::CreatePixelColorSpec(RGBA8888, nullptr);
  return {l8, la88, rgb888, rgba8888};
}

std::optional<QAVPixelImageFormat> byteFormatOf(const QAVMMPIPixelColor& colour) {
  const Owned<QAVMMPIPixelColorSpec> spec(colour.GetColorSpec());
  if (!spec) return std::nullopt;
  const auto shared = byteSpecs();
  const auto same =
      std::find_if(shared.begin(), shared.end(), [&](const auto* other) { return spec->HasSameSpecThan(other); });
  if (same == shared.end()) return std::nullopt;
  return static_cast<QAVPixelImageFormat>(same - shared.begin());
}

int atLeastOne(std::int64_t v) {
  return static_cast<int>(std::clamp<std::int64_t>(v, 1, std::numeric_limits<int>::max()));
}

// The largest size of the source's shape inside `target`; 0 x 0 when the shapes are the same already.
Size fittedSize(const Size& source, const Size& target, std::int64_t across, std::int64_t down) {
  if (across == down) return {0, 0};
  if (across > down) return {atLeastOne(down / source.height), target.height};
  return {target.width, atLeastOne(across / source.width)};
}

// Whether a new canvas shows the background as it is, or with another alpha, which it then gets.
bool showsBackground(QAVPixelImage& canvas, const QAVMMPIPixelColor& background) {
  QAVMMPIPixelColor colour;
  if (!QAVMMPIPixelImageAccess::GetPixelImageColorAt(canvas, 0, 0, colour)) return false;
  if (colour.HasSameSpecAndColorThan(background)) return true;
  if (canvas.GetFormat() != RGBA8888 || !colour.HasSameSpecThan(background)) return false;
  for (int channel = 0; channel < 3; ++channel)
    if (colour.GetUCHARi(channel) != background.GetUCHARi(channel)) return false;
  if (colour.GetUCHARi(3) == background.GetUCHARi(3)) return false;
  canvas.SetTransparency(background.GetUCHARi(3));
  return true;
}

bool pasteCentred(QAVPixelImage& canvas, const Size& size, QAVPixelImage& image, const Size& fitted) {
  Owned<QAVPixelImage> piece;
  if (fitted == size) {
    image.AddRef();
    piece.reset(&image);
  } else {
    piece.reset(image.CreateResizedCopy(fitted.width, fitted.height, QAVMMIResampleMitchell));
  }
  return piece &&
         canvas.PasteImage((size.width - fitted.width) / 2, (size.height - fitted.height) / 2, piece.get(), 0) == S_OK;
}

}  // namespace

QAVPixelImage* QAVMMIResize::CenterAndFitInRectangleByKeepingRatio(QAVPixelImage& image, int width, int height,
                                                                   QAVMMPIPixelColor* background) {
  const QAVPixelImageFormat format = image.GetFormat();
  const auto number = static_cast<std::int32_t>(format);
  if ((number >= 4 && number <= 13) || width < 2 || height < 2) return nullptr;
  const Size target = {width, height};
  Size source = {};
  image.GetSize(source.width, source.height);
  if (source.width == 0 || source.height == 0) return nullptr;
  const Owned<QAVMMPIPixelColorSpec> spec(QAVMMPIPixelColorSpec::BuildOrRetrievePixelColorSpecFromPixelImage(image));
  if (!spec) return nullptr;
  const std::optional<QAVPixelImageFormat> canvasFormat = background ? byteFormatOf(*background) : format;
  if (!canvasFormat) return nullptr;

  const std::int64_t across = std::int64_t{source.height} * width, down = std::int64_t{source.width} * height;
  if (across == down && *canvasFormat == format) {
    if (source != target) return image.CreateResizedCopy(width, height, QAVMMIResampleMitchell);
    image.AddRef();
    return &image;
  }
  const Size fitted = fittedSize(source, target, across, down);
  Owned<QAVPixelImage> canvas(new QAVPixelImage(width, height, *canvasFormat));
  if (background && !showsBackground(*canvas, *background)) return nullptr;
  return pasteCentred(*canvas, target, image, fitted) ? canvas.release() : nullptr;
}
