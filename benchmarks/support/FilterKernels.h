#pragma once

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

/// Whole weights, some of them negative.
inline std::vector<float> wholeWeights(int size) {
  std::vector<float> weights(static_cast<std::size_t>(size * size));
  for (std::size_t i = 0; i < weights.size(); ++i) weights[i] = static_cast<float>(i * 7 % 5) - 1.0f;
  return weights;
}

}  // namespace qav::bench
