#pragma once

#include <QAVBaseUnknown.h>
#include <QAVExport.h>
#include <QAVPixelImageFormat.h>
#include <QAVResult.h>
#include <QAVString.h>

#include <cstddef>
#include <cstdint>

class QAVMMPIPixelColorSpec;

/// Image in memory: a size, a format and the pixels.
///
/// Reference counted: an image made with `new`, or returned by a Create operation, has one reference that its
/// holder releases. Sizes are checked before anything is allocated: a size that is negative or cannot be held
/// makes a constructor throw `std::bad_alloc`. The pixels of a new image are zeros (transparent black); the
/// rows of a new `BitonalRuns` image are white. One image may be read by several threads at once; who changes
/// it must be alone.
class QAV_EXPORT QAVPixelImage : public QAVBaseUnknown {
 public:
  /// An image with pixels of its own.
  QAVPixelImage(int width, int height, QAVPixelImageFormat format);
  /// Adopts `pixels`, made with `new unsigned char[]` and large enough for the size and format (it may be null:
  /// the image then has no pixels). On an exception the buffer stays the caller's. Formats without one buffer
  /// (`BitonalRuns`, `NoPixelStorage`) ignore it but free it when it was theirs to free.
  QAVPixelImage(int width, int height, QAVPixelImageFormat format, unsigned char* pixels,
                QAVDeallocatePixels deallocate);
  /// Deep copy.
  QAVPixelImage(const QAVPixelImage& other);
  /// Deep copy; assigning an image to itself leaves it as it is, buffer included. References do not change.
  QAVPixelImage& operator=(const QAVPixelImage& other);
  ~QAVPixelImage() override;

  /// Bytes of one pixel: 1, 2, 3, 4 for `L8` to `RGBA8888`; 12, 16, 6, 8 for formats 10 to 13; otherwise 0.
  virtual int GetBytesPerPixel();
  /// Width and height in pixels.
  virtual void GetSize(int& width, int& height) const {
    width = width_;
    height = height_;
  }
  /// How the pixels are held.
  virtual QAVPixelImageFormat GetFormat() const { return format_; }
  /// Byte buffer of formats `L8` to `RGBA8888`, never null for an image that made its own; null for others.
  virtual const unsigned char* GetPixelsToRead() const { return pixels_; }
  /// The same buffer for writing; null means that the image cannot be changed.
  virtual unsigned char* GetPixelsToModify();
  /// `BitonalRuns`: the slot of row `row`'s coded string (made with `new[]`, owned by the image, null for a white
  /// row). Other formats and rows outside the image: a slot that belongs to no row.
  virtual unsigned char*& GetPixelsRuns(int row);
  /// `BitonalRuns`: bytes in row `row`'s coded string; 0 where there is no such row.
  virtual int GetPixelsRunsLength(int row) const {
    return runLengths_ && row >= 0 && row < height_ ? runLengths_[row] : 0;
  }
  /// The slot of that length.
  virtual int& GetPixelsRunsLength(int row);
  /// Samples of `RGBFloat` and `RGBAFloat` images, row after row; null for other formats.
  virtual const float* GetFloatingPixelsToRead() const { return floatingPixels_; }
  /// Turns a `BitonalRuns` image into `L8` (black 0, white 255). S_OK, or E_FAIL for another format. The argument
  /// is reserved and has no effect.
  virtual HRESULT ExpandRuns(int reserved);
  /// Reverses the order of the rows of a `BitonalRuns` image. S_OK, or E_FAIL for another format.
  virtual HRESULT ReverseRowOrder();
  /// Takes a new size, format and buffer, frees what it held, and adopts `pixels` as the adopting constructor does.
  /// S_OK, or E_FAIL for a size that cannot be held: the image is then as before, and frees `pixels` all the same
  /// when `deallocate` says that it owns them. It may be given its own buffer.
  virtual HRESULT ResetPixels(int width, int height, QAVPixelImageFormat format, unsigned char* pixels,
                              QAVDeallocatePixels deallocate);
  /// Bits of one pixel: 8 times the bytes, and 1 for `BitonalRuns`.
  virtual int GetBitsPerPixel();
  /// Writable samples of `RGBFloat` and `RGBAFloat` images; null for other formats.
  virtual float* GetFloatingPixelsToModify();
  /// Samples of row `row` of a floating-point image; null for other formats and for rows outside the image.
  virtual float* GetFloatingRow(int row);
  /// Colour specification of the image's format, shared and without a reference for the caller; null for formats
  /// whose pixels have no colour (`NoPixelStorage` and unknown ones).
  virtual QAVMMPIPixelColorSpec* getSpec();
  /// New image of the given size in this image's format, resampled with the kernel `kind`; null for sizes below 1,
  /// an empty source, or an unknown kind. Both directions are summed in double precision and rounded once, halves up;
  /// the kernel widens when the size shrinks, and the edge pixels stand for what lies outside. Alpha is a channel like
  /// the others: a constant image stays constant. `BitonalRuns` images are resampled to the nearest pixel.
  virtual QAVPixelImage* CreateResizedCopy(int width, int height, QAVMMIResampleType kind);
  /// Copies the part of `source` that falls inside this image, with its top-left corner at (x, y), converted to
  /// this image's format. S_OK, also when nothing falls inside; E_FAIL for a null source or formats that do not
  /// convert. `flag` is reserved.
  virtual HRESULT PasteImage(int x, int y, QAVPixelImage* source, int flag);
  /// Converts the image in place. S_OK, or E_FAIL when either format holds no pixels; the image is then unchanged.
  ///
  /// Grey from colour is the Rec. 709 luma (2126 R + 7152 G + 722 B + 5000) / 10000, so equal channels v give v.
  /// Alpha is dropped, or set to opaque. To `BitonalRuns`: a luminance below 128 is black. From it: black 0,
  /// white 255. Samples of other sizes map by full scale, rounded to the nearest value, floating ones clamped to
  /// 0..1 first and not-a-number as 0; grey is made of colour already reduced to bytes.
  virtual HRESULT ConvertToFormat(QAVPixelImageFormat format);
  /// New image holding this one converted as ConvertToFormat does, or null.
  virtual QAVPixelImage* CreateConvertedCopy(QAVPixelImageFormat format);

  // The same questions to an image that must not change.
  /// As the virtual function of this name.
  int GetBytesPerPixel() const { return const_cast<QAVPixelImage*>(this)->GetBytesPerPixel(); }
  /// As the virtual function of this name.
  int GetBitsPerPixel() const { return const_cast<QAVPixelImage*>(this)->GetBitsPerPixel(); }
  /// Row `row`'s coded string; null for a white row and where there is no such row.
  const unsigned char* GetPixelsRuns(int row) const { return const_cast<QAVPixelImage*>(this)->GetPixelsRuns(row); }
  /// As the virtual function of this name.
  const float* GetFloatingRow(int row) const { return const_cast<QAVPixelImage*>(this)->GetFloatingRow(row); }
  /// As the virtual function of this name.
  QAVMMPIPixelColorSpec* getSpec() const { return const_cast<QAVPixelImage*>(this)->getSpec(); }
  /// As the virtual function of this name.
  QAVPixelImage* CreateResizedCopy(int width, int height, QAVMMIResampleType kind) const {
    return const_cast<QAVPixelImage*>(this)->CreateResizedCopy(width, height, kind);
  }
  /// As the virtual function of this name.
  QAVPixelImage* CreateConvertedCopy(QAVPixelImageFormat format) const {
    return const_cast<QAVPixelImage*>(this)->CreateConvertedCopy(format);
  }

  /// Samples of formats 12 and 13, row after row; null for other formats.
  const std::uint16_t* GetSixteenBitPixelsToRead() const { return sixteenBitPixels_; }
  /// The same samples for writing.
  std::uint16_t* GetSixteenBitPixelsToModify() { return sixteenBitPixels_; }

  /// Sets every pixel's alpha: the byte for `LA88` and `RGBA8888`, its fraction of full scale for the other formats
  /// with alpha. Formats without alpha stay as they are.
  void SetTransparency(unsigned char alpha);

  /// Image read from a TIFF, PNG or JPEG file, recognised by its content, with one reference for the caller. Null on
  /// any failure: no such file, not one of these, damaged, cut short, or declaring a picture out of proportion to
  /// the file. A path is used as it is given. The last argument is reserved.
  static QAVPixelImage* CreateFromFile(const QAVString& path, QAVReadOnlyState state, int reserved);
  /// Writes the image as "TIFF" (every format that holds pixels), "PNG" or "JPEG" (quality 95; alpha is dropped).
  /// Formats that PNG or JPEG do not know are converted to the nearest one that they do. S_OK or E_FAIL; a file that
  /// could not be written completely is removed.
  HRESULT WriteToFile(const QAVString& path, const QAVString& format) const;

  /// The meta-object of this class itself.
  static const QAVMetaClass* MetaObject();
  const QAVMetaClass* GetMetaObject() const override;

 private:
  void Adopt(int width, int height, QAVPixelImageFormat format, unsigned char* pixels, bool owned);
  void TakeFrom(QAVPixelImage& other) noexcept;
  void FreePixels() noexcept;

  int width_ = 0;
  int height_ = 0;
  QAVPixelImageFormat format_ = L8;
  unsigned char* pixels_ = nullptr;
  int* runLengths_ = nullptr;
  unsigned char** runs_ = nullptr;
  float* floatingPixels_ = nullptr;
  std::uint16_t* sixteenBitPixels_ = nullptr;
  unsigned char* buffer_ = nullptr;  ///< the memory behind one of the pixel pointers above
  bool ownsBuffer_ = true;
};
