#include <QAVMMIResize.h>
#include <QAVMMPIPixelColorSpec.h>
#include <QAVMMResamplingKernels.h>
#include <QAVMMResizeEngine.h>

#include <cstdint>

#include "operations/Catalogue.h"

namespace qavraster {
namespace {

enum Kernel { kBox, kTriangle, kCatmullRom, kMitchell, kLanczos2, kLanczos3, kGaussian };

Setting kernelSetting() {
  return {"kernel",
          {choice("NAME", {{"box", kBox},
                           {"triangle", kTriangle},
                           {"catmull-rom", kCatmullRom},
                           {"mitchell", kMitchell},
                           {"lanczos2", kLanczos2},
                           {"lanczos3", kLanczos3},
                           {"gaussian", kGaussian}})},
          "Kernel of --resize.",
          {"lanczos3"}};
}

Setting backgroundSetting() {
  return {"background",
          {text("COLOUR", "R,G,B,A or none")},
          "Colour of the margins that --fit leaves. They are never painted: only 0,0,0 with any A is possible.",
          {"none"}};
}

QAVMMGenericFilter& filterOf(int kernel) {
  static QAVMMBoxFilter box;
  static QAVMMTriangleFilter triangle;
  static QAVMMCatmullRomFilter catmullRom;
  static QAVMMMitchellFilter mitchell;
  static QAVMMLanczos2Filter lanczos2;
  static QAVMMLanczos3Filter lanczos3;
  static QAVMMGaussianFilter gaussian;
  QAVMMGenericFilter* const filters[] = {&box, &triangle, &catmullRom, &mitchell, &lanczos2, &lanczos3, &gaussian};
  return *filters[kernel];
}

// Grey, and alpha where the format has it, of a picture whose colours are alike.
Image greyOf(const QAVPixelImage& picture, QAVPixelImageFormat format) {
  int width = 0, height = 0;
  picture.GetSize(width, height);
  Image grey(new QAVPixelImage(width, height, format));
  const int channels = picture.GetBytesPerPixel(), kept = grey->GetBytesPerPixel();
  const unsigned char* from = picture.GetPixelsToRead();
  unsigned char* to = grey->GetPixelsToModify();
  for (std::int64_t i = std::int64_t{width} * height; i > 0; --i, from += channels, to += kept) {
    to[0] = from[0];
    to[kept - 1] = kept == 1 ? from[0] : from[channels - 1];
  }
  return grey;
}

void resize(Context& c, const Values& v) {
  const Size size = v.size(0);
  const QAVPixelImageFormat format = c.image->GetFormat();
  const bool isGrey = format == L8 || format == LA88;
  // The engine takes colour alone.
  if (isGrey) c.require(c.image->ConvertToFormat(format == L8 ? RGB888 : RGBA8888));
  QAVMMResizeEngine engine(&filterOf(c.setting("kernel").integer(0)));
  c.replace(engine.scale(c.image.get(), static_cast<unsigned int>(size.width), static_cast<unsigned int>(size.height)));
  if (isGrey) c.image = greyOf(*c.image, format);
}

QAVMMPIPixelColor backgroundColour(const std::string& written) {
  const auto channels = std::get<std::vector<double>>(parseValue(numbers("--background", 4, 4), written));
  std::array<float, 4> values;
  for (std::size_t i = 0; i < 4; ++i) values[i] = static_cast<float>(channels[i]);
  QAVMMPIPixelColorSpec* const spec = QAVMMPIPixelColorSpec::CreatePixelColorSpec(RGBA8888, nullptr);
  QAVMMPIPixelColor colour(spec, values);
  spec->Release();
  return colour;
}

void fit(Context& c, const Values& v) {
  const Size size = v.size(0);
  const std::string& written = c.setting("background").text(0);
  QAVMMPIPixelColor background;
  if (written != "none") background = backgroundColour(written);
  c.replace(QAVMMIResize::CenterAndFitInRectangleByKeepingRatio(*c.image, size.width, size.height,
                                                                written == "none" ? nullptr : &background));
}

}  // namespace

Family resamplingFamily() {
  return {"Resampling",
          {
              {"resize",
               {size("SIZE")},
               "Resizes to SIZE with the kernel of --kernel, for images of bytes or floats.",
               resize,
               {"kernel"}},
              {"fit",
               {size("SIZE")},
               "Centres the image in SIZE, scaled to fit with its shape kept; see --background.",
               fit,
               {"background"}},
          },
          {kernelSetting(), backgroundSetting()}};
}

}  // namespace qavraster
