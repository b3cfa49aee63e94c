#pragma once

#include <QAVMMWeightsTable.h>

#include <cstddef>
#include <span>

namespace qav {

/// A resampling whose sizes are those of its buffers, none of them 0. Rows follow one another without gaps; source and
/// target do not overlap; 3 or 4 channels. A direction without runs of weights stays as it is; one of the two has them.
template <class Sample>
struct StripJob {
  const Sample* source;
  std::size_t sourceWidth;
  std::size_t sourceHeight;
  Sample* target;
  std::size_t width;
  std::size_t height;
  int channels;
  std::span<const QAVMMContribution> horizontal;
  std::span<const QAVMMContribution> vertical;
  bool verticalFirst;
};

/// Both passes at once, with the results of one after the other. Between them no more rows are kept than the second
/// pass looks at together, so that they stay in the cache. Instances for unsigned char and float.
template <class Sample>
void resampleInStrips(const StripJob<Sample>& job);

}  // namespace qav
