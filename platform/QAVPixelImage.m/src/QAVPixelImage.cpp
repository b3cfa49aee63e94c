#include "PixelLayout.h"
#include "PixelMemory.h"

#include <QAVPixelImage.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace {

template <class T>
T& slotOfNoRow() {
  thread_local T slot;
  slot = T{};
  return slot;
}

}  // namespace

QAVPixelImage::QAVPixelImage(int width, int height, QAVPixelImageFormat format) {
  const std::size_t bytes = pixelBytes(width, height, format);
  if (pixelLayoutOf(format).channels == 0) {
    Adopt(width, height, format, nullptr, true);
    return;
  }
  unsigned char* const pixels = newPixelBuffer(bytes);
  std::memset(pixels, 0, bytes);
  Adopt(width, height, format, pixels, true);
}

QAVPixelImage::QAVPixelImage(int width, int height, QAVPixelImageFormat format, unsigned char* pixels,
                             QAVDeallocatePixels deallocate) {
  pixelBytes(width, height, format);
  Adopt(width, height, format, pixels, deallocate == QAVDeallocatePixelsByImage);
}

QAVPixelImage::QAVPixelImage(const QAVPixelImage& other) : QAVBaseUnknown(other) {
  const std::size_t bytes = pixelBytes(other.width_, other.height_, other.format_);
  std::unique_ptr<unsigned char[]> copy;
  if (other.buffer_) {
    copy.reset(newPixelBuffer(bytes));
    std::memcpy(copy.get(), other.buffer_, bytes);
  }
  Adopt(other.width_, other.height_, other.format_, nullptr, true);
  if (copy) Adopt(width_, height_, format_, copy.release(), true);
  if (!other.runs_) return;
  try {
    for (int row = 0; row < height_; ++row) {
      runLengths_[row] = other.runLengths_[row];
      if (!other.runs_[row]) continue;
      const auto length = static_cast<std::size_t>(std::max(0, other.runLengths_[row]));
      runs_[row] = new unsigned char[length];
      std::memcpy(runs_[row], other.runs_[row], length);
    }
  } catch (...) {
    FreePixels();
    throw;
  }
}

QAVPixelImage& QAVPixelImage::operator=(const QAVPixelImage& other) {
  if (this == &other) return *this;
  QAVPixelImage copy(other);
  TakeFrom(copy);
  return *this;
}

QAVPixelImage::~QAVPixelImage() { FreePixels(); }

// Sets the fields without freeing what they held. Only the row arrays of BitonalRuns are allocated here, first.
void QAVPixelImage::Adopt(int width, int height, QAVPixelImageFormat format, unsigned char* pixels, bool owned) {
  const PixelLayout layout = pixelLayoutOf(format);
  std::unique_ptr<int[]> lengths;
  std::unique_ptr<unsigned char*[]> runs;
  if (format == BitonalRuns) {
    lengths.reset(new int[static_cast<std::size_t>(height)]());
    runs.reset(new unsigned char*[static_cast<std::size_t>(height)]());
  }
  if (layout.channels == 0 && owned) delete[] std::exchange(pixels, nullptr);
  width_ = width;
  height_ = height;
  format_ = format;
  buffer_ = layout.channels == 0 ? nullptr : pixels;
  ownsBuffer_ = owned;
  pixels_ = layout.bytesPerChannel == 1 ? buffer_ : nullptr;
  floatingPixels_ = layout.bytesPerChannel == 4 ? reinterpret_cast<float*>(buffer_) : nullptr;
  sixteenBitPixels_ = layout.bytesPerChannel == 2 ? reinterpret_cast<std::uint16_t*>(buffer_) : nullptr;
  runLengths_ = lengths.release();
  runs_ = runs.release();
}

void QAVPixelImage::TakeFrom(QAVPixelImage& other) noexcept {
  std::swap(width_, other.width_);
  std::swap(height_, other.height_);
  std::swap(format_, other.format_);
  std::swap(pixels_, other.pixels_);
  std::swap(runLengths_, other.runLengths_);
  std::swap(runs_, other.runs_);
  std::swap(floatingPixels_, other.floatingPixels_);
  std::swap(sixteenBitPixels_, other.sixteenBitPixels_);
  std::swap(buffer_, other.buffer_);
  std::swap(ownsBuffer_, other.ownsBuffer_);
}

void QAVPixelImage::FreePixels() noexcept {
  if (ownsBuffer_) delete[] buffer_;
  for (int row = 0; runs_ && row < height_; ++row) delete[] runs_[row];
  delete[] runs_;
  delete[] runLengths_;
  buffer_ = pixels_ = nullptr;
  floatingPixels_ = nullptr;
  sixteenBitPixels_ = nullptr;
  runs_ = nullptr;
  runLengths_ = nullptr;
}

int QAVPixelImage::GetBytesPerPixel() { return pixelLayoutOf(format_).bytesPerPixel(); }

int QAVPixelImage::GetBitsPerPixel() { return format_ == BitonalRuns ? 1 : 8 * GetBytesPerPixel(); }

unsigned char* QAVPixelImage::GetPixelsToModify() { return pixels_; }

unsigned char*& QAVPixelImage::GetPixelsRuns(int row) {
  return runs_ && row >= 0 && row < height_ ? runs_[row] : slotOfNoRow<unsigned char*>();
}

int& QAVPixelImage::GetPixelsRunsLength(int row) {
  return runLengths_ && row >= 0 && row < height_ ? runLengths_[row] : slotOfNoRow<int>();
}

HRESULT QAVPixelImage::ExpandRuns(int) { return format_ == BitonalRuns ? ConvertToFormat(L8) : E_FAIL; }

HRESULT QAVPixelImage::ReverseRowOrder() {
  if (format_ != BitonalRuns) return E_FAIL;
  std::reverse(runs_, runs_ + height_);
  std::reverse(runLengths_, runLengths_ + height_);
  return S_OK;
}

HRESULT QAVPixelImage::ResetPixels(int width, int height, QAVPixelImageFormat format, unsigned char* pixels,
                                   QAVDeallocatePixels deallocate) {
  // An image may be given its own buffer back, to be read in another shape: that buffer must not be freed twice.
  const bool owned = ownsBuffer_;
  if (pixels == buffer_) ownsBuffer_ = false;
  try {
    QAVPixelImage replacement(width, height, format, pixels, deallocate);
    TakeFrom(replacement);
  } catch (const std::bad_alloc&) {
    if (pixels != buffer_ && deallocate == QAVDeallocatePixelsByImage) delete[] pixels;
    ownsBuffer_ = owned;
    return E_FAIL;
  }
  return S_OK;
}

float* QAVPixelImage::GetFloatingPixelsToModify() { return floatingPixels_; }

float* QAVPixelImage::GetFloatingRow(int row) {
  if (!floatingPixels_ || row < 0 || row >= height_) return nullptr;
  const auto samples = static_cast<std::size_t>(width_) * static_cast<std::size_t>(pixelLayoutOf(format_).channels);
  return floatingPixels_ + static_cast<std::size_t>(row) * samples;
}

HRESULT QAVPixelImage::ConvertToFormat(QAVPixelImageFormat format) {
  if (format == format_ && pixelLayoutOf(format).channels + (format == BitonalRuns) > 0) return S_OK;
  QAVPixelImage* converted = CreateConvertedCopy(format);
  if (!converted) return E_FAIL;
  TakeFrom(*converted);
  converted->Release();
  return S_OK;
}

const QAVMetaClass* QAVPixelImage::MetaObject() {
  static const QAVMetaClass* const meta =
      QAVMetaClass::Register("QAVPixelImage", QAVBaseUnknown::MetaObject()->ClassName(), "PixelImage");
  return meta;
}

const QAVMetaClass* QAVPixelImage::GetMetaObject() const { return MetaObject(); }
