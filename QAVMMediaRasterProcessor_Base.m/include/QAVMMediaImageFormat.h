#pragma once

#include <QAVExport.h>
#include <QAVPixelImage.h>
#include <QAVPixelImageFormat.h>
#include <QAVResult.h>

#include <cstdint>

/// The library's own numbering of pixel formats. Only their sizes matter here.
enum QAVMMediaImagePixelFormat : std::int32_t {
  QAVMMediaImageBitonal = 0,   ///< 1 bit
  QAVMMediaImageL8 = 1,        ///< 8 bits
  QAVMMediaImageLA88 = 2,      ///< 16 bits
  QAVMMediaImageRGB888 = 3,    ///< 24 bits
  QAVMMediaImageRGBA8888 = 4,  ///< 32 bits
  QAVMMediaImage16Bit5 = 5,    ///< 5 to 17: 16 bits each
  QAVMMediaImage16Bit17 = 17,  ///< 16 bits
  QAVMMediaImage24Bit18 = 18,  ///< 24 bits
  QAVMMediaImage32Bit19 = 19,  ///< 19 to 21: 32 bits each
  QAVMMediaImage32Bit21 = 21,  ///< 32 bits
  QAVMMediaImageUnknown = -1,  ///< no format of this numbering
};

/// Bits of the channel masks that the colour operations take. Only the bits that an image's format has count.
inline constexpr int QAVMMIChannelLuminance = 1;
/// Red of `RGB888` and `RGBA8888`.
inline constexpr int QAVMMIChannelRed = 2;
/// Green of `RGB888` and `RGBA8888`.
inline constexpr int QAVMMIChannelGreen = 4;
/// Blue of `RGB888` and `RGBA8888`.
inline constexpr int QAVMMIChannelBlue = 8;
/// Alpha of `LA88` and `RGBA8888`.
inline constexpr int QAVMMIChannelAlpha = 16;

/// The formula of QAVMMediaImageProcessor::Grey. Unsigned integer arithmetic; divisions round down.
enum QAVMMIGreyType : std::int32_t {
  QAVMMIGreyLuma = 0,         ///< (2125 R + 7154 G + 465 B) / 10000; white becomes 248
  QAVMMIGreyGreen = 1,        ///< G
  QAVMMIGreyAverage = 2,      ///< (R + G + B) / 3
  QAVMMIGreyLightness = 3,    ///< (max + min) / 2
  QAVMMIGreyLumaVideo = 4,    ///< (2989 R + 5866 G + 1145 B) / 10000
  QAVMMIGreyLumaAgain = 5,    ///< as 0
  QAVMMIGreyLumaCoarse = 6,   ///< (222 R + 707 G + 57 B) / 1000; white becomes 251
  QAVMMIGreyAntialiased = 7,  ///< for `BitonalRuns` images alone: expand, then antialias
};

/// The direction of QAVMMediaImageProcessor::Mirror.
enum QAVMMIMirrorType : std::int32_t {
  QAVMMIMirrorNone = 0,       ///< as it is
  QAVMMIMirrorLeftRight = 1,  ///< every row reversed
  QAVMMIMirrorTopBottom = 2,  ///< the order of the rows reversed
  QAVMMIMirrorBoth = 3,       ///< left-right first, then top-bottom
};

/// How QAVMMediaImageProcessor::Mask reads the mask image; every value but 0 is the alpha mask.
enum QAVMMIMaskType : std::int32_t {
  QAVMMIMaskLuminance = 0,  ///< luminance times alpha decides how much of the source's alpha stays
  QAVMMIMaskAlpha = 1,      ///< a non-zero alpha keeps the source's alpha, a zero removes it
};

/// The filters of QAVMMediaImageProcessor::Filter. Kernels are given as corners, edges, centre, or row by row; T, M, B
/// are the rows above, of and below the pixel. 17 and 18 are not assigned.
enum QAVMMIFilterType : std::int32_t {
  QAVMMIFilterSmoothBox = 0,         ///< 1/9 all over
  QAVMMIFilterSmoothLight = 1,       ///< 0.1, 0.1, 0.2
  QAVMMIFilterSmoothGauss = 2,       ///< 1/16, 1/8, 1/4
  QAVMMIFilterSmoothCentre = 3,      ///< 1/16, 1/16, 1/2
  QAVMMIFilterSharpenLight = 4,      ///< 0, -1/16, 5/4
  QAVMMIFilterSharpenMedium = 5,     ///< 0, -1/6, 5/3; its weights sum to a little less than 1: a uniform v gives v - 1
  QAVMMIFilterSharpen = 6,           ///< 0, -1, 5
  QAVMMIFilterSharpenCross = 7,      ///< 1, -2, 5
  QAVMMIFilterGauss = 8,             ///< as 2
  QAVMMIFilterSharpenStrong = 9,     ///< -1, -1, 9
  QAVMMIFilterSobel = 10,            ///< magnitude with the weights 1 2 1
  QAVMMIFilterPrewitt = 11,          ///< magnitude with the weights 1 1 1
  QAVMMIFilterIsotropic = 12,        ///< magnitude with the weights 1, sqrt(2), 1, in single precision
  QAVMMIFilterPrewittCompass = 13,   ///< |N + E| + |N - E|, N = 1 1 1, 1 -2 1, -1 -1 -1, E its quarter turn
  QAVMMIFilterKirsch = 14,           ///< magnitudes of 3 3 3, 3 0 3, -5 -5 -5 and -5 3 3, -5 0 3, -5 3 3
  QAVMMIFilterRoberts = 15,          ///< |M right - B| + |M - B right|
  QAVMMIFilterLaplace = 16,          ///< 1/sqrt(2), 1, -(4 + 4/sqrt(2))
  QAVMMIFilterSobelHorizontal = 19,  ///< 1 2 1, 0 0 0, -1 -2 -1: bright above dark
  QAVMMIFilterSobelVertical = 20,    ///< -1 0 1, -2 0 2, -1 0 1: dark before bright
  QAVMMIFilterPrewittHorizontal = 21,  ///< 1 1 1, 0 0 0, -1 -1 -1: bright above dark
  QAVMMIFilterPrewittVertical = 22,    ///< 1 0 -1, three times: bright before dark
  QAVMMIFilterMedian = 23,             ///< fifth of nine
  QAVMMIFilterMinimum = 24,            ///< least of nine
  QAVMMIFilterMaximum = 25,            ///< greatest of nine
  QAVMMIFilterOpening = 26,            ///< minimum, then maximum
  QAVMMIFilterClosing = 27,            ///< maximum, then minimum
};

/// The methods of QAVMMediaImageProcessor::Dither; any other value is refused.
enum QAVMMIDitherType : std::int32_t {
  QAVMMIDitherFloydSteinberg = 0,  ///< error diffusion in sixteenths to the right and three pixels below
  QAVMMIDitherShortRow = 1,        ///< error diffusion in sixteenths to the right and four pixels below and to the left
  QAVMMIDitherJarvis = 2,          ///< error diffusion in forty-eighths over three rows
  QAVMMIDitherStucki = 3,          ///< error diffusion in forty-seconds over three rows
  QAVMMIDitherVariable = 4,        ///< error diffusion with weights by the pixel's value, rows to and fro
  QAVMMIDitherThreshold = 5,       ///< white above the level of SetDitherThreshold
};

/// Bits of one pixel of format `f`: 1, 8, 16, 24, 32 for 0..4, 16 for 5..17, 24 for 18, 32 for 19..21; 0 for any other
/// value.
QAV_EXPORT int QAVMMediaImageGetBitPerPixel(QAVMMediaImagePixelFormat f) noexcept;

/// The library's number for a pixel-image format: 1, 2, 3, 4 for `L8` to `RGBA8888`, 0 for `BitonalRuns`, -1 for any
/// other.
QAV_EXPORT QAVMMediaImagePixelFormat QAVMMediaImageGetPixelFormat(QAVPixelImageFormat f) noexcept;

/// Bytes that the image's pixels take: width x height x bytes per pixel for `L8` to `RGBA8888`; for `BitonalRuns` 136
/// (an allowance for the image's own bookkeeping) plus the lengths of all rows' coded strings; 136 for any other
/// format. A size that does not fit is INT_MAX.
QAV_EXPORT int QAVMMediaImageGetBitmapSize(const QAVPixelImage& image);
