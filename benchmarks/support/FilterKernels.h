#pragma once

#include <cmath>
#include <vector>

namespace qav::bench {

/// Weights of a kernel of any size that sum to 1, no two of them alike and none a simple fraction.
inline std::vector<float> unevenWeights(int size) {
  std::vector<float> weights(static_cast<std::size_t>(size * size));
  float sum = 0.0f;
  for (std::size_t i = 0; i < weights.size(); ++i) sum += weights[i] = 1.0f + 0.137f * static_cast<float>(i * 7 % 11);
  for (float& w : weights) w /= sum;
  return weights;
}

/// A Gaussian bell as callers compute it.
inline std::vector<float> bellWeights(int size) {
  std::vector<float> weights;
  for (int y = -size / 2; y <= size / 2; ++y)
    for (int x = -size / 2; x <= size / 2; ++x) weights.push_back(std::exp(static_cast<float>(-x * x - y * y) / 4.5f));
  return weights;
}

/// The mean.
inline std::vector<float> equalWeights(int size) {
  return std::vector<float>(static_cast<std::size_t>(size * size), 1.0f / static_cast<float>(size * size));
}

/// Whole weights, some of them negative.
inline std::vector<float> wholeWeights(int size) {
  std::vector<float> weights(static_cast<std::size_t>(size * size));
  for (std::size_t i = 0; i < weights.size(); ++i) weights[i] = static_cast<float>(i * 7 % 5) - 1.0f;
  return weights;
}

}  // namespace qav::bench
