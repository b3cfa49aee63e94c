#pragma once

#include <QAVPixelImageFormat.h>

#include <cstddef>
#include <vector>

/// For every output position of one axis: which input positions it is made of, and their weights.
struct ResamplingTaps {
  struct Position {
    int first;            ///< first input position
    int count;            ///< number of input positions, at least 1
    std::size_t weights;  ///< index of the first weight
  };
  std::vector<Position> positions;
  std::vector<double> weights;  ///< those of one output position add up to 1
};

/// Taps that resample `from` samples to `to` samples, both at least 1. The kernel widens when the size shrinks; weights
/// of positions outside the input go to the edge sample.
ResamplingTaps makeResamplingTaps(QAVMMIResampleType kind, int from, int to);
