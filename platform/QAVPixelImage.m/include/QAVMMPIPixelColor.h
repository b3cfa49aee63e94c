#pragma once

#include <QAVExport.h>
#include <QAVMMPIPixelColorSpec.h>

#include <array>

class QAVPixelImage;

/// One pixel's colour together with its colour specification (format and colour space).
///
/// Holds a reference to the colour specification for as long as it lives. A default colour has none, equals no other
/// colour specification, and has channels of 0.
class QAV_EXPORT QAVMMPIPixelColor {
 public:
  QAVMMPIPixelColor() noexcept = default;
  /// Channels in the order and in the units of the colour specification's format: 0..255, 0..65535, or floating-point.
  /// `BitonalRuns` has one channel: 0 black, 255 white.
  QAVMMPIPixelColor(QAVMMPIPixelColorSpec* spec, const std::array<float, 4>& channels) noexcept;
  /// A copy takes a reference to the colour specification too.
  QAVMMPIPixelColor(const QAVMMPIPixelColor& other) noexcept;
  /// Gives the old colour specification back and takes a reference to the other's.
  QAVMMPIPixelColor& operator=(const QAVMMPIPixelColor& other) noexcept;
  ~QAVMMPIPixelColor();

  /// Takes a colour specification and channels as the constructor does.
  void Set(QAVMMPIPixelColorSpec* spec, const std::array<float, 4>& channels) noexcept;

  /// The colour specification with one more reference for the caller, or null.
  QAVMMPIPixelColorSpec* GetColorSpec() const;
  /// True when both have a colour specification and the two are the same.
  bool HasSameSpecThan(const QAVMMPIPixelColor& other) const;
  /// True when colour specification and every channel are the same.
  bool HasSameSpecAndColorThan(const QAVMMPIPixelColor& other) const;
  /// Compares the channels alone, for colours known to share a colour specification; false when they do not.
  bool HasSameColorWithSameSpecThan(const QAVMMPIPixelColor& other) const;
  /// Channel `i` (from 0) as a byte: as it is for byte formats, scaled and rounded for others. 0 outside 0..3.
  unsigned char GetUCHARi(int i) const;

  /// The channels, in the units of the constructor.
  const std::array<float, 4>& GetChannels() const noexcept { return channels_; }

 private:
  QAVMMPIPixelColorSpec* spec_ = nullptr;
  std::array<float, 4> channels_{};
};
