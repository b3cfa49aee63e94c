#include <QAVPrtImageIterator.h>

#include "formats/PixelSpan.h"
#include "kernels/PrintSamples.h"

#include <algorithm>

namespace {

constexpr std::size_t kBeforeFirst = static_cast<std::size_t>(-1);
constexpr std::uint8_t kWhite = 255;
constexpr std::uint8_t kMostTransparentPrinted = 127;

}  // namespace

QAVPrtImageIterator::QAVPrtImageIterator(const QAVPixelImage* image, int bottomUp, int mode)
    : image_(image), bottomUp_(bottomUp != 0), pixel_(kBeforeFirst) {
  if (!image_) return;
  const QAVPixelImageFormat format = image_->GetFormat();
  bytesPerPixel_ = static_cast<std::size_t>(qav::byteChannels(format));
  dropsAlpha_ = mode == 1 && (format == LA88 || format == RGBA8888);
  pixels_ = bytesPerPixel_ ? image_->GetPixelsToRead() : nullptr;
  int width = 0, height = 0;
  image_->GetSize(width, height);
  if (width < 1 || height < 1) return;
  width_ = static_cast<std::size_t>(width);
  count_ = width_ * static_cast<std::size_t>(height);
}

QAVPrtImageIterator::~QAVPrtImageIterator() = default;

int QAVPrtImageIterator::NextPixel() {
  channel_ = 0;
  if (count_ == 0 || pixel_ == count_) return 0;
  if (pixel_ == kBeforeFirst) {
    pixel_ = bottomUp_ ? count_ - width_ : 0;
  } else if (bottomUp_ && pixel_ % width_ == width_ - 1) {
    const std::size_t row = pixel_ / width_;
    pixel_ = row > 0 ? (row - 1) * width_ : count_;
  } else {
    ++pixel_;
  }
  return pixel_ < count_ ? 1 : 0;
}

int QAVPrtImageIterator::NextChar(std::uint8_t& out) {
  if (pixel_ == count_) return 0;
  const std::size_t samples = bytesPerPixel_ - (dropsAlpha_ ? 1 : 0);
  if ((channel_ >= samples || pixel_ == kBeforeFirst) && !NextPixel()) return 0;
  if (pixels_) {
    const std::uint8_t* const pixel = pixels_ + bytesPerPixel_ * pixel_;
    const bool printed = !dropsAlpha_ || pixel[bytesPerPixel_ - 1] >= kMostTransparentPrinted;
    out = printed ? pixel[channel_] : kWhite;
  }
  ++channel_;
  return 1;
}

// Pixels from the current one that follow one another in memory and in the walk.
std::size_t QAVPrtImageIterator::PixelsTogether() const {
  return bottomUp_ ? width_ - pixel_ % width_ : count_ - pixel_;
}

std::span<const std::uint8_t> QAVPrtImageIterator::NextSamples(std::span<std::uint8_t> room) {
  if (room.empty()) return {};
  const std::size_t samples = bytesPerPixel_ - (dropsAlpha_ ? 1 : 0);
  const bool withinPixel = channel_ > 0 && channel_ < samples;
  if (!pixels_ || withinPixel || room.size() < samples) {
    room[0] = 0;
    return room.first(static_cast<std::size_t>(NextChar(room[0])));
  }
  const bool atCurrent = channel_ == 0 && pixel_ != kBeforeFirst;
  if (atCurrent ? pixel_ == count_ : !NextPixel()) return {};
  const std::uint8_t* const first = pixels_ + bytesPerPixel_ * pixel_;
  std::size_t taken = PixelsTogether();
  if (dropsAlpha_) taken = std::min(taken, room.size() / samples);
  pixel_ += taken - 1;
  channel_ = samples;
  if (!dropsAlpha_) return {first, taken * samples};
  const auto& kernels = qav::kernels::printSamplesKernels();
  (samples == 1 ? kernels.whitenGrey : kernels.whitenColour)(first, taken, room.data());
  return room.first(taken * samples);
}

const QAVMetaClass* QAVPrtImageIterator::MetaObject() {
  static const QAVMetaClass* const meta =
      QAVMetaClass::Register("QAVPrtImageIterator", "QAVNull", "MultimediaRasterProcessor");
  return meta;
}

const QAVClassId& QAVPrtImageIterator::ClassId() { return MetaObject()->ClassId(); }

const char* QAVPrtImageIterator::ClassName() { return MetaObject()->ClassName(); }

QAVBaseUnknown* QAVPrtImageIterator::CreateItself() { return nullptr; }

const QAVMetaClass* QAVPrtImageIterator::GetMetaObject() const { return MetaObject(); }

const char* QAVPrtImageIterator::IsA() const { return ClassName(); }

int QAVPrtImageIterator::IsAKindOf(const char* className) const { return MetaObject()->IsAKindOf(className); }
