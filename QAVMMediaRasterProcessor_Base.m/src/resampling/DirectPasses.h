#pragma once

#include <QAVMMWeightsTable.h>

#include "resampling/ImageSamples.h"

#include <cstdint>

/// The passes as they are defined, sample by sample, for any sizes whatever: the sizes need not be those of the
/// buffers, and the buffers may overlap. Reads outside the source give 0, writes outside the destination are dropped.
namespace qav {

struct PassSizes {
  std::uint32_t sourceWidth;
  std::uint32_t sourceHeight;
  std::uint32_t width;
  std::uint32_t height;
};

/// Row by row, columns 0 to sizes.width - 1 of rows 0 to sizes.height - 1. Instances for unsigned char and float.
template <class Sample>
void resampleRowsDirectly(const ImageSamples<Sample>& source, const ImageSamples<Sample>& target, int channels,
                          const PassSizes& sizes, const QAVMMWeightsTable& table);

/// Column by column. Taps after a run's first are sizes.sourceWidth pixels apart, results sizes.width pixels.
template <class Sample>
void resampleColumnsDirectly(const ImageSamples<Sample>& source, const ImageSamples<Sample>& target, int channels,
                             const PassSizes& sizes, const QAVMMWeightsTable& table);

/// As resampleRowsDirectly for one bit a pixel, most significant first, into one byte a pixel.
void expandBitRowsDirectly(const ImageSamples<unsigned char>& source, const ImageSamples<unsigned char>& target,
                           const PassSizes& sizes, const QAVMMWeightsTable& table);

}  // namespace qav
