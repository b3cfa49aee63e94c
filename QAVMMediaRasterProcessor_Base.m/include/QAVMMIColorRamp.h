#pragma once

#include <QAVExport.h>

/// Table of 256 bytes that maps every 8-bit sample to a new one: the engine of all point operations.
///
/// Every Apply transform rewrites each entry e as f(e), so transforms compose: a later one acts on the output of the
/// earlier ones. All arithmetic is single precision in the order written; a computed value v becomes an entry by
/// rounding toward zero and clamping to 0..255 (not-a-number gives 0). No operation fails. The object is the table and
/// nothing else, 256 bytes.
///
///     QAVMMIColorRamp ramp;
///     ramp.ApplyBrightness(0.1f);
///     ramp.ApplyGamma(1.4f);
///     unsigned char brighter = ramp[sample];
class QAV_EXPORT QAVMMIColorRamp {
 public:
  /// The identity.
  QAVMMIColorRamp() noexcept { Reset(); }
  /// Back to the identity: entry i is i.
  void Reset() noexcept;

  /// e = (e/255 + b) * 255 + 0.5, with b clamped to -1..1. Nothing for b = 0.
  void ApplyBrightness(float b) noexcept;
  /// Scales about mid-grey. c = 0: nothing; c <= -1: 128 everywhere; c < 0: slope 1 + c; 0 < c < 1: slope 1 / (1 - c);
  /// c >= 1: 255 from 128 on, 0 below.
  void ApplyContrast(float c) noexcept;
  /// e = pow(e/255, 1/g) * 255 + 0.5. Nothing for g = 1; the exponent is 10000 for g < 0.0001 and 1/3 for g > 3.
  void ApplyGamma(float g) noexcept;
  /// e = 255 - e.
  void ApplyNegative() noexcept;
  /// Inverts the entries above the threshold t * 255 + 0.5, rounded toward zero and limited to 0..255.
  void ApplySolarize(float t) noexcept;
  /// Quantises to n evenly spaced levels from 0 to 255. Nothing for n outside 2..254.
  void ApplyPosterize(unsigned int n) noexcept;
  /// Stretches the fractions lo..hi of full scale to 0..1. Nothing for 0..1 itself, for an interval wholly outside it,
  /// and for an empty one; hi below lo counts as lo.
  void ApplyStretch(float lo, float hi) noexcept;

  /// The table; also what indexing a ramp reads.
  const unsigned char* GetTable() const noexcept { return table_; }
  /// The table, so that a ramp is indexed like an array.
  operator const unsigned char*() const noexcept { return table_; }  // NOLINT(google-explicit-constructor)

 private:
  unsigned char table_[256];
};

static_assert(sizeof(QAVMMIColorRamp) == 256);
