#pragma once

#include <QAVBaseUnknown.h>
#include <QAVExport.h>
#include <QAVPixelImage.h>

#include <cstddef>
#include <cstdint>
#include <span>

/// Walks the samples of an image in the order in which a printer takes them.
///
/// Rows come from the first to the last or from the last to the first, pixels from left to right, and the channels of
/// a pixel in their order in memory. In mode 1 the alpha channel is left out, and the colours of a pixel whose alpha is
/// 126 or less come as 255: what is more transparent than not prints as the white of the paper.
///
/// The iterator only looks at the image, which must outlive it and stay unchanged meanwhile. It is made on the stack
/// and walks once; at the end it stays at the end. Formats other than `L8` to `RGBA8888`, and images without pixels in
/// memory, deliver one empty sample for every pixel (no value is stored).
///
///     QAVPrtImageIterator samples(&image, 0, 1);
///     for (std::uint8_t sample; samples.NextChar(sample);) print(sample);
class QAV_EXPORT QAVPrtImageIterator : public QAVBaseUnknown {
 public:
  /// A null `image` delivers nothing. `bottomUp` other than 0: the last row first. `mode` 1: without alpha and with
  /// transparent pixels white; any other: every byte as it is.
  QAVPrtImageIterator(const QAVPixelImage* image, int bottomUp, int mode);
  ~QAVPrtImageIterator() override;

  /// Moves to the first channel of the next pixel (at first: of the first one). 1, or 0 when there is none.
  int NextPixel();
  /// Stores the next sample in `out` and returns 1; at the end returns 0 and leaves `out` as it is.
  int NextChar(std::uint8_t& out);
  /// Takes at least one of the next samples, as many as lie together, and returns where they are: in the image, or in
  /// `room` when alpha is left out. Nothing at the end or when `room` is empty; samples without a value are 0. May be
  /// mixed with NextChar.
  std::span<const std::uint8_t> NextSamples(std::span<std::uint8_t> room);

  /// The meta-object of this class itself.
  static const QAVMetaClass* MetaObject();
  /// The identity of this class.
  static const QAVClassId& ClassId();
  /// "QAVPrtImageIterator".
  static const char* ClassName();
  /// Null: the object model cannot make an iterator without an image.
  static QAVBaseUnknown* CreateItself();
  const QAVMetaClass* GetMetaObject() const override;
  const char* IsA() const override;
  int IsAKindOf(const char* className) const override;

 private:
  std::size_t PixelsTogether() const;

  const QAVPixelImage* image_;
  std::size_t bytesPerPixel_ = 0;  ///< 0 for formats without bytes
  bool bottomUp_;
  bool dropsAlpha_ = false;
  const std::uint8_t* pixels_ = nullptr;
  std::size_t width_ = 0;
  std::size_t count_ = 0;    ///< pixels of the image
  std::size_t channel_ = 0;  ///< the next byte of the current pixel
  std::size_t pixel_;        ///< the current pixel; count_ at the end
};
