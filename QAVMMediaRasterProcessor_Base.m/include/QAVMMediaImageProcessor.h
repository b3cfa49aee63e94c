#pragma once

#include <QAVExport.h>
#include <QAVMMediaImageFormat.h>
#include <QAVPixelImage.h>
#include <QAVResult.h>

/// The image operations of the library, all static.
///
/// Conventions shared by all of them:
/// - They change the image in place and return a status, S_OK or E_FAIL unless said otherwise. Those whose names begin
///   with Create, and Mask, leave their images alone and return a new one with one reference for the caller, or null.
/// - The trailing `apply` flag: 0 changes nothing and only asks whether the operation would accept the image.
/// - The channel mask (QAVMMIChannelLuminance and its siblings) selects channels; bits that the format does not have do
///   not count, and a mask that selects none of its channels is an error. Channels left out stay as they are.
/// - A failing check leaves the image as it was, unless said otherwise. An image whose GetPixelsToModify gives null
///   cannot be changed: E_FAIL.
/// - `progress` may be null. It is never called unless an operation says so.
/// - Channels are treated alike and alone; alpha is never multiplied into colour.
/// - Sums of floating-point values are taken in the order written, conversions to integers saturate and turn
///   not-a-number into 0: the same bits on every machine.
class QAV_EXPORT QAVMMediaImageProcessor {
 public:
  /// @name Point operations
  /// Each runs the selected channels of an `L8`, `LA88`, `RGB888` or `RGBA8888` image through one table
  /// (QAVMMIColorRamp). With the apply flag 0 they return E_FAIL for formats `BitonalRuns` and 5 and S_OK for any
  /// other, and look at nothing else. With a neutral parameter they return S_OK at once, whatever the image.
  /// @{

  /// Adds `b` (-1..1, clamped) of full scale. Neutral: 0.
  static HRESULT Brightness(QAVPixelImage& image, float b, int channels, void (*progress)(float), unsigned char apply);
  /// Scales about mid-grey, from flat (-1) to thresholding (1). Neutral: 0.
  static HRESULT Contrast(QAVPixelImage& image, float c, int channels, void (*progress)(float), unsigned char apply);
  /// Power curve with exponent 1/g, g in 0.0001..3. Neutral: 1.
  static HRESULT Gamma(QAVPixelImage& image, float g, int channels, void (*progress)(float), unsigned char apply);
  /// Inverts.
  static HRESULT Negative(QAVPixelImage& image, int channels, void (*progress)(float), unsigned char apply);
  /// Inverts what lies above the fraction `t` of full scale.
  static HRESULT Solarize(QAVPixelImage& image, float t, int channels, void (*progress)(float), unsigned char apply);
  /// Reduces to `n` evenly spaced levels, 2..254. Neutral: 255. E_FAIL for any other n.
  static HRESULT Posterize(QAVPixelImage& image, unsigned int n, int channels, void (*progress)(float),
                           unsigned char apply);
  /// Brightness, then contrast, then gamma, in one table. Neutral: 0, 0, 1 together.
  static HRESULT AdjustColor(QAVPixelImage& image, float b, float c, float g, int channels, void (*progress)(float),
                             unsigned char apply);
  /// Brightness of red, green and blue apart; alpha stays. `RGB888` and `RGBA8888` alone: E_FAIL for any other format,
  /// and for an image without a writable buffer, also with the apply flag 0.
  static HRESULT Balance(QAVPixelImage& image, float r, float g, float b, void (*progress)(float), unsigned char apply);
  /// @}

  /// @name Tone and colour
  /// @{

  /// Stretches each selected channel so that its minimum becomes 0 and its maximum 255. A sample that raises the
  /// running maximum is not taken into the minimum, so a channel that only rises along the buffer stays as it is, as
  /// does a constant one. `L8` to `RGBA8888`; E_FAIL for any other format and for a mask that selects none of the
  /// image's channels. With the apply flag 0 returns S_OK whatever the format.
  static HRESULT StretchHistogram(QAVPixelImage& image, int channels, void (*progress)(float), unsigned char apply);
  /// Turns an `RGB888` or `RGBA8888` image into `L8` by the formula `type`; a `BitonalRuns` image is expanded, and for
  /// type 7 antialiased at level 3 (QAVMMIFilterSmoothCentre). The pixels are handed over through ResetPixels, once;
  /// the image owns them from then on, even if it fails. E_FAIL for formats `L8`, `LA88` and 5 whatever the flag, and,
  /// with the flag set, for any other format and for runs that do not expand; E_NOTIMPL for an unknown type, the image
  /// being as it was.
  static HRESULT Grey(QAVPixelImage& image, QAVMMIGreyType type, void (*progress)(float), unsigned char apply);
  /// Mirrors the image. E_FAIL for format 5 whatever the flag, and, with the flag set, for an image without pixels or
  /// rows that cannot be reordered; E_NOTIMPL for an unknown type, but S_OK for one on a `BitonalRuns` image. The rows
  /// of a `BitonalRuns` image whose width is no multiple of 8 are shifted by width mod 8 bits, over the first (size +
  /// 7) / 8 of their bytes alone.
  static HRESULT Mirror(QAVPixelImage& image, QAVMMIMirrorType type, void (*progress)(float), unsigned char apply);
  /// New `RGBA8888` image with the colour of `source` and its alpha attenuated by `mask`. For the luminance mask the
  /// factor is (A/255) x (L/255) of the mask's pixel with L = 0.2125 R + 0.7154 G + 0.0721 B, in double precision, the
  /// new alpha rounded toward zero. Null unless both are `RGBA8888`, of one size and readable.
  static QAVPixelImage* Mask(const QAVPixelImage& source, const QAVPixelImage& mask, QAVMMIMaskType type,
                             void (*progress)(float));
  /// @}

  /// @name Convolution with kernels of the caller's
  ///
  /// Pixels are four bytes, red, green, blue and alpha, all treated alike; kernels are kernelSize x kernelSize weights,
  /// row by row from the top left. A result is the sum of weight x sample over the taps that lie inside the image,
  /// divided by the sum of all weights, so beyond the edges all is transparent black: a smoothing kernel makes borders
  /// darker and more transparent. Sums are taken in single precision, tap by tap in the kernel's order. The quotient is
  /// truncated and clamped to 0..255, not-a-number gives 0: where the weights sum to 0, a positive sum gives 255 and
  /// any other 0.
  /// @code
  /// const float sharpen[] = {0, -1, 0, -1, 5, -1, 0, -1, 0};
  /// QAVMMediaImageProcessor::LinearConvolveMatrix(image, 3, sharpen);
  /// @endcode
  /// @{

  /// Channels of the pixel at (row, column) as floats. Only row * width + column decides which one that is: zeros when
  /// it is not within width * height pixels, or when `pixels` is null. Always S_OK.
  static HRESULT GetPixelRGBA(int row, int column, int width, int height, unsigned char* pixels, float& red,
                              float& green, float& blue, float& alpha);
  /// One pixel of a convolution: from `source` into `destination`, both RGBA buffers of width x height pixels. Nothing
  /// is written, and S_OK returned, when row * width + column is not within them or `destination` is null. E_FAIL for a
  /// null `source` or `kernel`. An even kernelSize is read as the next odd one.
  static HRESULT ApplyKernelRGBA(int row, int column, int width, int height, int kernelSize, const float* kernel,
                                 unsigned char* source, unsigned char* destination);
  /// Convolves an RGBA buffer in place. E_FAIL for null `pixels` or, with sizes of 1 and more, a null `kernel`; with a
  /// size below 1 it does nothing and returns S_OK. An even kernelSize is read as the next odd one.
  static HRESULT LinearConvolveMatrixRGBA(unsigned char* pixels, int width, int height, int kernelSize,
                                          const float* kernel);
  /// Convolves an `RGBA8888` image in place. E_FAIL for an even kernelSize, an empty image or a null `kernel`. Images
  /// of format `L8`, `LA88` and `RGB888` stay as they are, with S_OK; other formats are refused with E_FAIL.
  static HRESULT LinearConvolveMatrix(QAVPixelImage& image, int kernelSize, const float* kernel);
  /// @}

  /// @name Filters and dithering
  /// @{

  /// Runs a filter of the catalogue (QAVMMIFilterType) on the image in place. Edge pixels are repeated outward; each
  /// channel is filtered alone, alpha too, except by the median of colours.
  ///
  /// - 0 to 9: `L8`, `LA88`, `RGB888` or `RGBA8888`, `passes` times. Each result is the exact sum of the nine products
  ///   with the single-precision weights, truncated and clamped to 0..255.
  /// - 10 to 16 and 19 to 22 convert the image to `L8` first, and it stays so whatever follows. 16 and 19 to 22 run
  ///   `passes` times as 0 to 9 do, with negative sums as 0; 10 to 15 run once: the sum of two absolute responses, at
  ///   most 255.
  /// - 23 (median): `L8` or `RGB888`, once. Of colours, the one whose 2220 R + 7067 G + 459 B is the fifth of nine.
  /// - 24 to 27 (morphology): `L8`, once.
  ///
  /// E_FAIL for `passes` below 1 whatever the type, for another format (E_NOTIMPL by the median), for an empty image
  /// and for one that cannot be changed; E_NOTIMPL for an unknown type.
  ///
  /// `progress` is called with 0 first, then after each row with a value that grows by 1 / height, then with 1. With
  /// several passes it grows by passes / height in every row of every pass, and so beyond 1. Opening and closing report
  /// two such ramps. The last argument has no effect.
  static HRESULT Filter(QAVPixelImage& image, QAVMMIFilterType type, int passes, void (*progress)(float),
                        unsigned char flag);
  /// Filters a copy. Null for formats `BitonalRuns` and 5 and when Filter fails.
  static QAVPixelImage* CreateFiltered(const QAVPixelImage& image, QAVMMIFilterType type, int passes,
                                       void (*progress)(float));
  /// Softens the image by one pass of a smoothing filter: level 0 box, 1 light, 2 Gauss, 3 centre, any other Gauss.
  /// Results, refusals and progress are those of Filter; `flag` has no effect.
  static HRESULT Antialiase(QAVPixelImage& image, int level, void (*progress)(float), unsigned char flag);
  /// Softens a copy. Null for formats `BitonalRuns` and 5 and when Antialiase fails.
  static QAVPixelImage* CreateAntialiased(const QAVPixelImage& image, int level, void (*progress)(float));
  /// Sets the level of QAVMMIDitherThreshold, 127 at first, for the whole process: the low 8 bits of `threshold`.
  static void SetDitherThreshold(int threshold);
  /// Turns the image into black (0) and white (255) by one of six methods, as `L8`, or as `BitonalRuns` when
  /// `makeBitonal` is set. Every format that converts to `L8` is taken; the conversion stays even if something fails
  /// afterwards, and makeBitonal's is done for an unknown type too. An image that is `BitonalRuns` already stays as it
  /// is: S_OK when `acceptBitonal` is set, else E_FAIL. E_FAIL for an image without a writable buffer, then for an
  /// unknown type. An empty image becomes an empty image.
  ///
  /// Error diffusion compares with half of 256 whatever SetDitherThreshold says. Methods 0, 2 and 3 go back to
  /// R. W. Floyd and L. Steinberg (1976), J. F. Jarvis, C. N. Judice and W. H. Ninke (1976) and P. Stucki (1981); the
  /// last two with the share of the column to the left below moved one column further. QAVMMIDitherShortRow sends
  /// nothing to the right below. QAVMMIDitherVariable chooses its weights by the pixel's own value and scans rows to
  /// and fro. Calls on different threads do not disturb one another.
  static HRESULT Dither(QAVPixelImage& image, QAVMMIDitherType type, void (*progress)(float), unsigned char makeBitonal,
                        unsigned char acceptBitonal);
  /// @}

  /// @name Resampling
  /// @{

  /// Null, whatever the arguments; `progress` is never called. Part of the interface for binary compatibility alone:
  /// use QAVMMResizeEngine, QAVMMIResize, or the image's own CreateResizedCopy.
  static QAVPixelImage* CreateResampled(const QAVPixelImage& image, int width, int height, QAVMMIResampleType kind,
                                        void (*progress)(float));
  /// @}
};
