#pragma once

#include <cstdint>

/// How an image holds its pixels. Rows follow one another without padding, channels lie side by side in the
/// stated order.
enum QAVPixelImageFormat : std::int32_t {
  L8 = 0,              ///< 8 bits of luminance
  LA88 = 1,            ///< 8 bits each of luminance, alpha
  RGB888 = 2,          ///< 8 bits each of red, green, blue
  RGBA8888 = 3,        ///< 8 bits each of red, green, blue, alpha
  BitonalRuns = 4,     ///< one bit a pixel, 1 = black; every row is a string of coded runs (class CCITT)
  NoPixelStorage = 5,  ///< an image of this format has a size and no pixels; every operation refuses it
  RGBFloat = 10,       ///< red, green, blue as `float`
  RGBAFloat = 11,      ///< red, green, blue, alpha as `float`
  RGB161616 = 12,      ///< 16 bits each of red, green, blue, in the machine's byte order
  RGBA16161616 = 13,   ///< 16 bits each of red, green, blue, alpha, in the machine's byte order
};

/// Who frees a pixel buffer that an image is given.
enum QAVDeallocatePixels : std::int32_t {
  QAVDeallocatePixelsByImage = 0,   ///< the image owns it and frees it with `delete[]`
  QAVDeallocatePixelsByCaller = 1,  ///< the caller keeps it and frees it after the image's last use
};

/// Kernel of CreateResizedCopy.
enum QAVMMIResampleType : std::int32_t {
  QAVMMIResampleNearest = 0,     ///< the nearest pixel
  QAVMMIResampleTriangle = 1,    ///< linear interpolation
  QAVMMIResampleCatmullRom = 2,  ///< sharp cubic
  QAVMMIResampleMitchell = 3,    ///< softer cubic
};

/// Whether the caller of CreateFromFile means to change the image. Both give an image of its own.
enum QAVReadOnlyState : std::int32_t {
  QAVReadWrite = 0,  ///< to be changed
  QAVReadOnly = 1,   ///< to be looked at
};
