#include "PixelLayout.h"

#include <QAVMMPIPixelColor.h>

#include <algorithm>

QAVMMPIPixelColor::QAVMMPIPixelColor(QAVMMPIPixelColorSpec* spec, const std::array<float, 4>& channels) noexcept {
  Set(spec, channels);
}

QAVMMPIPixelColor::QAVMMPIPixelColor(const QAVMMPIPixelColor& other) noexcept { Set(other.spec_, other.channels_); }

QAVMMPIPixelColor& QAVMMPIPixelColor::operator=(const QAVMMPIPixelColor& other) noexcept {
  Set(other.spec_, other.channels_);
  return *this;
}

QAVMMPIPixelColor::~QAVMMPIPixelColor() { Set(nullptr, {}); }

void QAVMMPIPixelColor::Set(QAVMMPIPixelColorSpec* spec, const std::array<float, 4>& channels) noexcept {
  channels_ = channels;
  if (spec == spec_) return;
  if (spec) spec->AddRef();
  if (spec_) spec_->Release();
  spec_ = spec;
}

QAVMMPIPixelColorSpec* QAVMMPIPixelColor::GetColorSpec() const {
  if (spec_) spec_->AddRef();
  return spec_;
}

bool QAVMMPIPixelColor::HasSameSpecThan(const QAVMMPIPixelColor& other) const {
  return spec_ && spec_->HasSameSpecThan(other.spec_);
}

bool QAVMMPIPixelColor::HasSameSpecAndColorThan(const QAVMMPIPixelColor& other) const {
  return HasSameSpecThan(other) && channels_ == other.channels_;
}

bool QAVMMPIPixelColor::HasSameColorWithSameSpecThan(const QAVMMPIPixelColor& other) const {
  return HasSameSpecAndColorThan(other);
}

unsigned char QAVMMPIPixelColor::GetUCHARi(int i) const {
  if (!spec_ || i < 0 || i > 3) return 0;
  const float value = channels_[static_cast<std::size_t>(i)];
  const int bytes = pixelLayoutOf(spec_->GetFormat()).bytesPerChannel;
  const double scale = bytes == 4 ? 255.0 : bytes == 2 ? 255.0 / 65535.0 : 1.0;
  const double scaled = value * scale + 0.5;
  return static_cast<unsigned char>(scaled > 0.0 ? std::min(scaled, 255.0) : 0.0);
}
