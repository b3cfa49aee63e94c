#include "support/Comparison.h"

#include <lcms2.h>

namespace qav::bench {
namespace {

using Labs = std::vector<cmsCIELab>;

cmsCIELab labOf(const std::uint8_t* rgb) {
  static constexpr cmsCIEXYZ kD65{0.95047, 1.0, 1.08883};
  const double r = rgb[0] / 255.0, g = rgb[1] / 255.0, b = rgb[2] / 255.0;
  const cmsCIEXYZ xyz{0.4124564 * r + 0.3575761 * g + 0.1804375 * b, 0.2126729 * r + 0.7151522 * g + 0.0721750 * b,
                      0.0193339 * r + 0.1191920 * g + 0.9503041 * b};
  cmsCIELab lab;
  cmsXYZ2Lab(&kD65, &lab, &xyz);
  return lab;
}

// The Lab values of the photograph, with every `apart`-th pixel changed as our side changes it; 0 leaves all alone.
Labs labs(std::size_t apart) {
  std::vector<std::uint8_t> bytes = photograph(kWidth, kHeight, 3);
  Labs result;
  for (std::size_t i = 0; i < bytes.size() / 3; ++i) {
    std::uint8_t* const rgb = bytes.data() + 3 * i;
    for (std::size_t k = 0; apart > 0 && i % apart == 0 && k < 3; ++k)
      rgb[k] = static_cast<std::uint8_t>(rgb[k] + 3 + (i + k) % 5);
    result.push_back(labOf(rgb));
  }
  return result;
}

// The differences alone: conversion and statistics are not asked of the rival.
void differences(const Labs& second) {
  static const Labs first = labs(0);
  static std::vector<double> out(first.size());
  for (std::size_t i = 0; i < first.size(); ++i) out[i] = cmsCIE2000DeltaE(&first[i], &second[i], 1.0, 1.0, 1.0);
  keep(out.data());
}

[[maybe_unused]] const bool added[] = {
    add("Lab comparison, all pixels differ", "lcms2",
        [] {
          static const Labs second = labs(1);
          differences(second);
        }),
    add("Lab comparison, 1% differ", "lcms2",
        [] {
          static const Labs second = labs(100);
          differences(second);
        }),
};

}  // namespace
}  // namespace qav::bench
