#include <QAVMMIColorRamp.h>

#include "formats/Saturate.h"

#include <algorithm>
#include <cmath>

using qav::byteFrom;
using qav::intFrom;

namespace {

template <class Transform>
void rewrite(unsigned char (&table)[256], Transform transform) {
  for (unsigned char& entry : table) entry = transform(entry);
}

float fraction(unsigned char entry) { return static_cast<float>(entry) / 255.0f; }

}  // namespace

void QAVMMIColorRamp::Reset() noexcept {
  for (int i = 0; i < 256; ++i) table_[i] = static_cast<unsigned char>(i);
}

void QAVMMIColorRamp::ApplyBrightness(float b) noexcept {
  if (b == 0.0f) return;
  const float shift = std::clamp(b, -1.0f, 1.0f);
  rewrite(table_, [=](unsigned char e) { return byteFrom((fraction(e) + shift) * 255.0f + 0.5f); });
}

void QAVMMIColorRamp::ApplyContrast(float c) noexcept {
  if (c == 0.0f) return;
  if (c >= 1.0f) {
    rewrite(table_, [](unsigned char e) -> unsigned char { return e >= 128 ? 255 : 0; });
    return;
  }
  const float slope = c < -1.0f ? 0.0f : c < 0.0f ? 1.0f + c : 1.0f / (1.0f - c);
  const float offset = c < -1.0f ? 0.5f : c < 0.0f ? -c * 0.5f : (-c * slope) * 0.5f;
  rewrite(table_, [=](unsigned char e) { return byteFrom((fraction(e) * slope + offset) * 255.0f + 0.5f); });
}

void QAVMMIColorRamp::ApplyGamma(float g) noexcept {
  if (g == 1.0f) return;
  const float exponent = g < 0.0001f ? 10000.0f : g > 3.0f ? 0.33333334f : 1.0f / g;
  rewrite(table_, [=](unsigned char e) { return byteFrom(std::pow(fraction(e), exponent) * 255.0f + 0.5f); });
}

void QAVMMIColorRamp::ApplyNegative() noexcept {
  rewrite(table_, [](unsigned char e) { return static_cast<unsigned char>(255 - e); });
}

void QAVMMIColorRamp::ApplySolarize(float t) noexcept {
  const int threshold = std::max(0, std::min(255, intFrom(t * 255.0f + 0.5f)));
  rewrite(table_, [=](unsigned char e) { return e > threshold ? static_cast<unsigned char>(255 - e) : e; });
}

void QAVMMIColorRamp::ApplyPosterize(unsigned int n) noexcept {
  if (n - 2u > 252u) return;
  const float q = static_cast<float>(n) / 255.0f;
  const float k = 1.0f / static_cast<float>(n - 1);
  rewrite(table_, [=](unsigned char e) {
    const float level = std::trunc(static_cast<float>(e) * q);
    return byteFrom(level * k * 255.0f + 0.5f);
  });
}

void QAVMMIColorRamp::ApplyStretch(float lo, float hi) noexcept {
  if (lo == 0.0f && hi == 1.0f) return;
  if (lo < 0.0f) {
    if (hi < 0.0f) return;
    lo = 0.0f;
    if (hi > 1.0f) hi = 1.0f;
  } else if (lo > 1.0f) {
    return;
  } else {
    hi = std::min(1.0f, std::max(lo, hi));
  }
  const float span = hi - lo;
  if (span <= 0.0f) return;
  const float scale = 1.0f / span;
  rewrite(table_, [=](unsigned char e) { return byteFrom((fraction(e) - lo) * scale * 255.0f + 0.5f); });
}
