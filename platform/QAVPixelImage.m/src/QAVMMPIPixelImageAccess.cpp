#include "BitonalRows.h"
#include "PixelAccess.h"
#include "PixelLayout.h"

#include <QAVMMPIPixelImageAccess.h>

#include <algorithm>
#include <cstring>

namespace {

template <class T>
std::array<float, 4> channelsOf(const unsigned char* pixel, int count) {
  const auto* samples = reinterpret_cast<const T*>(pixel);
  std::array<float, 4> channels{};
  for (int i = 0; i < count; ++i) channels[static_cast<std::size_t>(i)] = static_cast<float>(samples[i]);
  return channels;
}

std::array<float, 4> channelsOf(PixelLayout layout, const unsigned char* pixel) {
  if (layout.bytesPerChannel == 1) return channelsOf<std::uint8_t>(pixel, layout.channels);
  if (layout.bytesPerChannel == 2) return channelsOf<std::uint16_t>(pixel, layout.channels);
  return channelsOf<float>(pixel, layout.channels);
}

// The pixels of an image as rows of equal layout. A `BitonalRuns` row is expanded when it is first asked for and kept
// until another one is.
class PixelRows {
 public:
  explicit PixelRows(const QAVPixelImage& image)
      : image_(image),
        size_(sizeOf(image)),
        bitonal_(image.GetFormat() == BitonalRuns),
        layout_(bitonal_ ? pixelLayoutOf(L8) : pixelLayoutOf(image.GetFormat())),
        pixels_(pixelsToRead(image)) {
    if (bitonal_) expanded_.resize(static_cast<std::size_t>(size_.width));
  }

  const ImageSize& Size() const { return size_; }
  bool IsBitonal() const { return bitonal_; }
  bool IsEmpty() const { return size_.pixels() == 0 || !(bitonal_ || pixels_); }
  PixelLayout Layout() const { return layout_; }
  std::size_t RowSamples() const {
    return static_cast<std::size_t>(size_.width) * static_cast<std::size_t>(layout_.channels);
  }
  const unsigned char* Row(int y) const {
    if (!bitonal_)
      return pixels_ + static_cast<std::size_t>(y) * RowSamples() * static_cast<std::size_t>(layout_.bytesPerChannel);
    if (expandedRow_ != y) readBitonalRow(image_, y, size_.width, expanded_.data());
    expandedRow_ = y;
    return expanded_.data();
  }
  std::array<float, 4> Channels(int x, int y) const {
    return channelsOf(layout_,
                      Row(y) + static_cast<std::size_t>(x) * static_cast<std::size_t>(layout_.bytesPerPixel()));
  }

 private:
  const QAVPixelImage& image_;
  ImageSize size_;
  bool bitonal_;
  PixelLayout layout_;
  const unsigned char* pixels_;
  mutable std::vector<unsigned char> expanded_;
  mutable int expandedRow_ = -1;
};

template <class T>
bool sameSamples(const unsigned char* first, const unsigned char* second, std::size_t count) {
  const auto* a = reinterpret_cast<const T*>(first);
  return std::equal(a, a + count, reinterpret_cast<const T*>(second));
}

bool sameRow(PixelLayout layout, const unsigned char* first, const unsigned char* second, std::size_t samples) {
  if (layout.bytesPerChannel == 1) return sameSamples<std::uint8_t>(first, second, samples);
  if (layout.bytesPerChannel == 2) return sameSamples<std::uint16_t>(first, second, samples);
  return sameSamples<float>(first, second, samples);
}

// How many of `count` pixels, `step` bytes apart from `first` on, have the channels `channels`. A pixel with the bytes
// of the one before it is the same without another look; floating-point samples are equal by value, not by bytes.
int runOf(const std::array<float, 4>& channels, PixelLayout layout, const unsigned char* first, int count,
          std::ptrdiff_t step) {
  constexpr int kBlock = 32;
  const auto bytes = static_cast<std::size_t>(layout.bytesPerPixel());
  const bool adjacent = step == layout.bytesPerPixel();
  int run = 0;
  while (run < count) {
    const unsigned char* const pixel = first + run * step;
    const bool block = adjacent && run > 0 && count - run >= kBlock;
    if (block && std::memcmp(pixel, pixel - bytes, kBlock * bytes) == 0) {
      run += kBlock;
      continue;
    }
    for (const int end = block ? run + kBlock : run + 1; run < end; ++run)
      if (channelsOf(layout, first + run * step) != channels) return run;
  }
  return run;
}

class RasterIterator final : public QAVMMPIPixelIterator {
 public:
  explicit RasterIterator(const QAVPixelImage& image) : rows_(image), spec_(image.getSpec()) {}

  void Release() override { delete this; }
  bool IsEmpty() const override { return rows_.IsEmpty(); }
  bool IsEndOfRow() const override { return x_ >= rows_.Size().width - 1; }
  bool IsStartOfRow() const override { return x_ == 0; }
  bool GoTo(int x, int y) override {
    if (!IsInside(y) || x < 0 || x >= rows_.Size().width) return false;
    x_ = x;
    y_ = y;
    return true;
  }
  void StepRight() override {
    if (!GoTo(x_ + 1, y_)) GoTo(0, y_ + 1);
  }
  void StepLeft() override {
    if (!GoTo(x_ - 1, y_)) GoTo(rows_.Size().width - 1, y_ - 1);
  }
  bool StepDown() override { return GoTo(x_, y_ + 1); }
  int CompareRows(int row, int referenceRow) override {
    if (!IsInside(row) || !IsInside(referenceRow) || IsEmpty()) return -1;
    const unsigned char* reference = rows_.Row(referenceRow);
    if (rows_.IsBitonal()) {
      reference_.assign(reference, reference + rows_.RowSamples());
      reference = reference_.data();
    }
    return sameRow(rows_.Layout(), rows_.Row(row), reference, rows_.RowSamples()) ? 0 : 1;
  }
  void GetColor(QAVMMPIPixelColor& colour) const override {
    if (!IsEmpty()) colour.Set(spec_, rows_.Channels(x_, y_));
  }
  void GetPosition(int& x, int& y) const override {
    x = x_;
    y = y_;
  }
  int CountSameColorRight(const QAVMMPIPixelColor& colour, int limit) const override {
    return CountRow(colour, std::min(limit, rows_.Size().width - x_), 1);
  }
  int CountSameColorLeft(const QAVMMPIPixelColor& colour, int limit) const override {
    return CountRow(colour, std::min(limit, x_ + 1), -1);
  }
  int CountSameColorDown(const QAVMMPIPixelColor& colour, int limit) const override {
    if (IsEmpty() || !HasSpecOf(colour)) return 0;
    const int count = std::min(limit, rows_.Size().height - y_);
    int run = 0;
    while (run < count && rows_.Channels(x_, y_ + run) == colour.GetChannels()) ++run;
    return run;
  }

 private:
  bool HasSpecOf(const QAVMMPIPixelColor& colour) const { return QAVMMPIPixelColor(spec_, {}).HasSameSpecThan(colour); }
  int CountRow(const QAVMMPIPixelColor& colour, int count, int direction) const {
    if (IsEmpty() || count <= 0 || !HasSpecOf(colour)) return 0;
    const std::ptrdiff_t bytes = rows_.Layout().bytesPerPixel();
    return runOf(colour.GetChannels(), rows_.Layout(), rows_.Row(y_) + x_ * bytes, count, direction * bytes);
  }
  bool IsInside(int row) const { return row >= 0 && row < rows_.Size().height; }

  PixelRows rows_;
  QAVMMPIPixelColorSpec* spec_;
  std::vector<unsigned char> reference_;
  int x_ = 0;
  int y_ = 0;
};

}  // namespace

QAVMMPIPixelIterator::~QAVMMPIPixelIterator() = default;

bool QAVMMPIPixelImageAccess::GetPixelImageColorAt(const QAVPixelImage& image, int x, int y,
                                                   QAVMMPIPixelColor& colour) {
  const PixelRows rows(image);
  const ImageSize size = rows.Size();
  if (rows.IsEmpty() || x < 0 || y < 0 || x >= size.width || y >= size.height) return false;
  colour.Set(image.getSpec(), rows.Channels(x, y));
  return true;
}

QAVMMPIPixelIterator* QAVMMPIPixelImageAccess::GetIterator(const QAVPixelImage& image) {
  return image.GetFormat() == BitonalRuns || pixelLayoutOf(image.GetFormat()).channels > 0 ? new RasterIterator(image)
                                                                                           : nullptr;
}
