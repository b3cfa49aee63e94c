#include <QAVMMIColorRamp.h>

#include "support/Test.h"

#include <bit>

namespace qav::test {
namespace {

using Table = std::vector<int>;

// Every step of the definitions in a variable of its own, so that nothing is computed in a wider type.
int byte(float v) { return std::isnan(v) || v < 1.0f ? 0 : v >= 256.0f ? 255 : static_cast<int>(v); }

void scale(Table& table, float slope, float offset) {
  for (int& e : table) {
    const float f = static_cast<float>(e) / 255.0f;
    const float product = f * slope;
    const float sum = product + offset;
    const float full = sum * 255.0f;
    e = byte(full + 0.5f);
  }
}

void brightness(Table& table, float b) {
  if (b == 0) return;
  scale(table, 1.0f, b > 1 ? 1.0f : b < -1 ? -1.0f : b);
}

void contrast(Table& table, float c) {
  if (c == 0) return;
  if (c < -1) return scale(table, 0.0f, 0.5f);
  if (c >= 1) {
    for (int& e : table) e = e >= 128 ? 255 : 0;
    return;
  }
  if (c < 0) return scale(table, 1.0f + c, -c * 0.5f);
  const float s = 1.0f / (1.0f - c);
  const float shifted = -c * s;
  scale(table, s, shifted * 0.5f);
}

void gamma(Table& table, float g) {
  if (g == 1) return;
  const float x = g < 0.0001f ? 10000.0f : g > 3.0f ? 0.33333334f : 1.0f / g;
  for (int& e : table) {
    const float full = powf(static_cast<float>(e) / 255.0f, x) * 255.0f;
    e = byte(full + 0.5f);
  }
}

void solarize(Table& table, float t) {
  const float full = t * 255.0f;
  const int threshold = byte(full + 0.5f);
  for (int& e : table) e = e > threshold ? 255 - e : e;
}

void posterize(Table& table, unsigned n) {
  if (n < 2 || n > 254) return;
  const float q = static_cast<float>(n) / 255.0f, k = 1.0f / static_cast<float>(n - 1);
  for (int& e : table) {
    const float level = truncf(static_cast<float>(e) * q) * k;
    const float full = level * 255.0f;
    e = byte(full + 0.5f);
  }
}

void stretch(Table& table, float lo, float hi) {
  if (lo == 0 && hi == 1) return;
  if (lo < 0) {
    if (hi < 0) return;
    lo = 0;
    if (hi > 1) hi = 1;
  } else if (lo > 1) {
    return;
  } else {
    if (hi < lo) hi = lo;
    if (hi > 1) hi = 1;
  }
  const float span = hi - lo;
  if (span <= 0) return;
  const float factor = 1.0f / span;
  for (int& e : table) {
    const float above = static_cast<float>(e) / 255.0f - lo;
    const float stretched = above * factor;
    const float full = stretched * 255.0f;
    e = byte(full + 0.5f);
  }
}

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kSpecial[] = {0.0f,  -0.0f,      1.0f,         -1.0f,   0.5f,   -0.5f,       2.0f,
                              7.0f,  0.0001f,    1e-40f,       -1e-40f, 1e-45f, 0.99999994f, 1.0000001f,
                              3.0f,  3.0000002f, 254.5f / 255, 1e38f,   -1e38f, kInfinity,   -kInfinity,
                              0.25f, 0.75f,      1e-7f,        0.6f,    0.4f};

float anyFloat(std::mt19937& random) {
  const auto bits = static_cast<std::uint32_t>(random());
  const int kind = below(4, random);
  if (kind == 0) return kSpecial[random() % std::size(kSpecial)];
  if (kind > 1) return std::uniform_real_distribution<float>(-1.3f, 3.3f)(random);
  const float f = std::bit_cast<float>(bits);
  return std::isnan(f) ? 0.3f : f;
}

void applyAny(QAVMMIColorRamp& ramp, Table& table, std::mt19937& random) {
  const float a = anyFloat(random), b = anyFloat(random);
  const unsigned n = random() % 5 ? static_cast<unsigned>(random() % 260) : static_cast<unsigned>(random());
  const float low = random() % 2 ? a : static_cast<float>(n & 255) / 255.0f;
  switch (random() % 7) {
    case 0:
      return ramp.ApplyBrightness(a), brightness(table, a);
    case 1:
      return ramp.ApplyContrast(a), contrast(table, a);
    case 2:
      return ramp.ApplyGamma(a), gamma(table, a);
    case 3:
      ramp.ApplyNegative();
      for (int& e : table) e = 255 - e;
      return;
    case 4:
      return ramp.ApplySolarize(a), solarize(table, a);
    case 5:
      return ramp.ApplyPosterize(n), posterize(table, n);
    default:
      return ramp.ApplyStretch(low, b), stretch(table, low, b);
  }
}

Table identity() {
  Table table(256);
  for (int i = 0; i < 256; ++i) table[static_cast<std::size_t>(i)] = i;
  return table;
}

Table tableOf(const QAVMMIColorRamp& ramp) { return {ramp.GetTable(), ramp.GetTable() + 256}; }

TEST(ColorRamp, AnySequenceOfTransformsIsTheirDefinitionOneAfterTheOther) {
  std::mt19937 random(11);
  for (int round = 0; round < 20000; ++round) {
    QAVMMIColorRamp ramp;
    Table table = identity();
    for (unsigned step = 0; step <= random() % 3; ++step) {
      applyAny(ramp, table, random);
      ASSERT_EQ(tableOf(ramp), table) << "round " << round << ", step " << step;
    }
    ramp.Reset();
    ASSERT_EQ(tableOf(ramp), identity());
  }
}

TEST(ColorRamp, NotANumber) {
  const float none = std::numeric_limits<float>::quiet_NaN();
  const Table zeros(256, 0);
  QAVMMIColorRamp brightness, contrast, solarize, gamma;
  brightness.ApplyBrightness(none);
  contrast.ApplyContrast(none);
  solarize.ApplySolarize(none);
  gamma.ApplyGamma(none);
  EXPECT_EQ(tableOf(brightness), zeros);
  EXPECT_EQ(tableOf(contrast), zeros);
  EXPECT_EQ(tableOf(solarize)[1], 254);
  // One to whatever power is one.
  EXPECT_EQ(tableOf(gamma)[254], 0);
  EXPECT_EQ(tableOf(gamma)[255], 255);
}

// Values that pin the constants themselves.
TEST(ColorRamp, KnownEntries) {
  const struct {
    void (*apply)(QAVMMIColorRamp&);
    int index, value;
  } cases[] = {
      {[](auto& r) { r.ApplyBrightness(0.5f); }, 0, 128},       {[](auto& r) { r.ApplyContrast(0.5f); }, 191, 255},
      {[](auto& r) { r.ApplyContrast(0.5f); }, 64, 1},          {[](auto& r) { r.ApplyGamma(0.0f); }, 254, 0},
      {[](auto& r) { r.ApplySolarize(0.5f); }, 129, 126},       {[](auto& r) { r.ApplyPosterize(2); }, 128, 255},
      {[](auto& r) { r.ApplyStretch(0.25f, 0.75f); }, 191, 255}};
  for (const auto& each : cases) {
    QAVMMIColorRamp ramp;
    each.apply(ramp);
    EXPECT_EQ(ramp[each.index], each.value) << &each - cases;
  }
}

}  // namespace
}  // namespace qav::test
