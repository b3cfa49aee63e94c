#pragma once

#include <QAVMMediaImageFormat.h>

#include "support/Images.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

/// The filters as they are defined, one sample at a time.
namespace qav::test {

struct KernelDefinition {
  QAVMMIFilterType type;
  float weights[9];
};

inline constexpr float kDiagonal = 0.70710677f;

inline constexpr KernelDefinition kKernelDefinitions[] = {
    {QAVMMIFilterSmoothBox, {1.0f / 9, 1.0f / 9, 1.0f / 9, 1.0f / 9, 1.0f / 9, 1.0f / 9, 1.0f / 9, 1.0f / 9, 1.0f / 9}},
    {QAVMMIFilterSmoothLight, {0.1f, 0.1f, 0.1f, 0.1f, 0.2f, 0.1f, 0.1f, 0.1f, 0.1f}},
    {QAVMMIFilterSmoothGauss, {0.0625f, 0.125f, 0.0625f, 0.125f, 0.25f, 0.125f, 0.0625f, 0.125f, 0.0625f}},
    {QAVMMIFilterSmoothCentre, {0.0625f, 0.0625f, 0.0625f, 0.0625f, 0.5f, 0.0625f, 0.0625f, 0.0625f, 0.0625f}},
    {QAVMMIFilterSharpenLight, {0, -0.0625f, 0, -0.0625f, 1.25f, -0.0625f, 0, -0.0625f, 0}},
    {QAVMMIFilterSharpenMedium, {0, -1.0f / 6, 0, -1.0f / 6, 5.0f / 3, -1.0f / 6, 0, -1.0f / 6, 0}},
    {QAVMMIFilterSharpen, {0, -1, 0, -1, 5, -1, 0, -1, 0}},
    {QAVMMIFilterSharpenCross, {1, -2, 1, -2, 5, -2, 1, -2, 1}},
    {QAVMMIFilterGauss, {0.0625f, 0.125f, 0.0625f, 0.125f, 0.25f, 0.125f, 0.0625f, 0.125f, 0.0625f}},
    {QAVMMIFilterSharpenStrong, {-1, -1, -1, -1, 9, -1, -1, -1, -1}},
    {QAVMMIFilterLaplace, {kDiagonal, 1, kDiagonal, 1, -6.8284273f, 1, kDiagonal, 1, kDiagonal}},
    {QAVMMIFilterSobelHorizontal, {1, 2, 1, 0, 0, 0, -1, -2, -1}},
    {QAVMMIFilterSobelVertical, {-1, 0, 1, -2, 0, 2, -1, 0, 1}},
    {QAVMMIFilterPrewittHorizontal, {1, 1, 1, 0, 0, 0, -1, -1, -1}},
    {QAVMMIFilterPrewittVertical, {1, 0, -1, 1, 0, -1, 1, 0, -1}},
};

/// A double holds each product and the sum of nine exactly.
inline std::uint8_t weigh(const float* weights, const int* samples) {
  double sum = 0;
  for (int i = 0; i < 9; ++i) sum += static_cast<double>(weights[i]) * samples[i];
  return static_cast<std::uint8_t>(sum < 0 ? 0 : sum > 255 ? 255 : std::trunc(sum));
}

/// n holds the neighbourhood row by row: T above, M middle, B below.
inline int gradientOf(QAVMMIFilterType type, const int* n) {
  const int *T = n + 1, *M = n + 4, *B = n + 7;
  if (type == QAVMMIFilterSobel || type == QAVMMIFilterPrewitt) {
    const int f = type == QAVMMIFilterSobel ? 2 : 1;
    const int gx = (T[1] - T[-1]) + f * (M[1] - M[-1]) + (B[1] - B[-1]);
    const int gy = (T[-1] + f * T[0] + T[1]) - (B[-1] + f * B[0] + B[1]);
    return std::abs(gx) + std::abs(gy);
  }
  if (type == QAVMMIFilterIsotropic) {
    const float root = 1.4142135f;
    const auto f = [](int v) { return static_cast<float>(v); };
    const float gx = root * f(M[1] - M[-1]) + f(T[1] - T[-1]) + f(B[1] - B[-1]);
    const float gy = root * f(T[0] - B[0]) + f(T[-1] + T[1]) - f(B[-1] + B[1]);
    return static_cast<int>(std::fabs(gx) + std::fabs(gy));
  }
  if (type == QAVMMIFilterPrewittCompass) {
    const int north = (T[-1] + T[0] + T[1]) + (M[-1] - 2 * M[0] + M[1]) - (B[-1] + B[0] + B[1]);
    const int east = (-T[-1] + T[0] + T[1]) + (-M[-1] - 2 * M[0] + M[1]) + (-B[-1] + B[0] + B[1]);
    return std::abs(north + east) + std::abs(north - east);
  }
  if (type == QAVMMIFilterKirsch) {
    const int k1 = 3 * (T[-1] + T[0] + T[1] + M[-1] + M[1]) - 5 * (B[-1] + B[0] + B[1]);
    const int k2 = 3 * (T[0] + T[1] + M[1] + B[0] + B[1]) - 5 * (T[-1] + M[-1] + B[-1]);
    return std::abs(k1) + std::abs(k2);
  }
  return std::abs(M[1] - B[0]) + std::abs(M[0] - B[1]);  // Roberts
}

struct Picture {
  int width, height, channels;
  std::vector<std::uint8_t> bytes;

  /// With the edge pixels repeated outward.
  std::uint8_t at(int x, int y, int k) const {
    x = std::clamp(x, 0, width - 1);
    y = std::clamp(y, 0, height - 1);
    return bytes[static_cast<std::size_t>((y * width + x) * channels + k)];
  }
};

struct ColourRecord {
  int key;
  std::uint8_t bytes[3];
};

inline ColourRecord medianRecord(std::vector<ColourRecord> records) {
  for (std::size_t gap = 3; gap > 0; --gap)
    for (std::size_t i = gap; i < records.size(); ++i)
      for (std::size_t j = i; j >= gap && records[j - gap].key > records[j].key; j -= gap)
        std::swap(records[j - gap], records[j]);
  return records[4];
}

inline std::uint8_t filteredSample(const Picture& p, QAVMMIFilterType type, int x, int y, int k) {
  int n[9];
  std::vector<ColourRecord> records;
  for (int i = 0; i < 9; ++i) {
    const int dx = i % 3 - 1, dy = i / 3 - 1;
    n[i] = p.at(x + dx, y + dy, k);
    if (p.channels == 3) {
      const std::uint8_t r = p.at(x + dx, y + dy, 0), g = p.at(x + dx, y + dy, 1), b = p.at(x + dx, y + dy, 2);
      records.push_back({2220 * r + 7067 * g + 459 * b, {r, g, b}});
    }
  }
  for (const auto& kernel : kKernelDefinitions)
    if (kernel.type == type) return weigh(kernel.weights, n);
  if (type == QAVMMIFilterMedian && p.channels == 3) return medianRecord(records).bytes[k];
  if (type < QAVMMIFilterMedian) return static_cast<std::uint8_t>(std::min(gradientOf(type, n), 255));
  std::sort(n, n + 9);
  return static_cast<std::uint8_t>(n[type == QAVMMIFilterMedian ? 4 : type == QAVMMIFilterMinimum ? 0 : 8]);
}

/// One pass of any filter but the two compound ones.
inline Picture filteredOnce(const Picture& p, QAVMMIFilterType type) {
  Picture out = p;
  std::size_t i = 0;
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x)
      for (int k = 0; k < p.channels; ++k) out.bytes[i++] = filteredSample(p, type, x, y, k);
  return out;
}

}  // namespace qav::test
