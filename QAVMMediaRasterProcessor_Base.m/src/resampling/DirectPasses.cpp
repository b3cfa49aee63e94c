#include "resampling/DirectPasses.h"

#include "formats/Saturate.h"

#include <algorithm>
#include <type_traits>

namespace qav {
namespace {

// Holds any product of a position, a size and a number of channels.
__extension__ using Position = unsigned __int128;

template <class Sample>
Sample rounded(double sum) {
  if constexpr (std::is_same_v<Sample, float>)
    return static_cast<float>(sum);
  else
    return byteFrom(sum + 0.5);
}

template <class Sample>
Sample sampleAt(const ImageSamples<Sample>& samples, Position at) {
  return at < samples.count ? samples.data[static_cast<std::size_t>(at)] : Sample{};
}

// One pixel: tap k of channel c lies at first + k * step + c.
template <class Sample>
void resamplePixel(const ImageSamples<Sample>& source, Position first, Position step,
                   const ImageSamples<Sample>& target, Position to, int channels, const QAVMMContribution& entry) {
  double sums[4] = {};
  for (int j = entry.left; j <= entry.right; ++j) {
    const auto tap = static_cast<unsigned>(j - entry.left);
    for (unsigned c = 0; c < static_cast<unsigned>(channels); ++c)
      sums[c] += static_cast<double>(sampleAt(source, first + tap * step + c)) * entry.weights[tap];
  }
  for (unsigned c = 0; c < static_cast<unsigned>(channels); ++c)
    if (to + c < target.count) target.data[static_cast<std::size_t>(to + c)] = rounded<Sample>(sums[c]);
}

// How many of `wanted` pieces of `step` samples begin inside `available` samples.
std::uint64_t reachable(std::uint64_t wanted, std::size_t available, std::uint64_t step) {
  return step == 0 ? 0 : std::min(wanted, (std::uint64_t{available} + step - 1) / step);
}

std::uint64_t entriesOf(const QAVMMWeightsTable& table, std::uint32_t wanted) {
  return std::min<std::uint64_t>(wanted, static_cast<std::uint64_t>(std::max(0, table.count)));
}

// Calls body(row, column, entry, where the result goes) for every result of a row pass that has a place.
template <class Sample, class Body>
void forEachInRows(const ImageSamples<Sample>& target, int channels, const PassSizes& sizes,
                   const QAVMMWeightsTable& table, Body body) {
  const std::uint64_t rows = reachable(sizes.height, target.count, target.rowStride);
  const auto step = static_cast<std::uint64_t>(channels);
  for (std::uint64_t row = 0; row < rows; ++row) {
    const std::size_t start = static_cast<std::size_t>(row) * target.rowStride;
    const std::uint64_t columns = reachable(entriesOf(table, sizes.width), target.count - start, step);
    for (std::uint64_t x = 0; x < columns; ++x) body(row, table.contributions[x], Position{start} + x * step);
  }
}

}  // namespace

template <class Sample>
void resampleRowsDirectly(const ImageSamples<Sample>& source, const ImageSamples<Sample>& target, int channels,
                          const PassSizes& sizes, const QAVMMWeightsTable& table) {
  const auto step = static_cast<unsigned>(channels);
  forEachInRows(target, channels, sizes, table, [&](std::uint64_t row, const QAVMMContribution& entry, Position to) {
    const Position first = Position{row} * source.rowStride + Position{static_cast<unsigned>(entry.left)} * step;
    resamplePixel(source, first, step, target, to, channels, entry);
  });
}

template <class Sample>
void resampleColumnsDirectly(const ImageSamples<Sample>& source, const ImageSamples<Sample>& target, int channels,
                             const PassSizes& sizes, const QAVMMWeightsTable& table) {
  const auto step = static_cast<unsigned>(channels);
  const Position sourceStride = Position{sizes.sourceWidth} * step;
  const std::uint64_t targetStride = std::uint64_t{sizes.width} * step;
  const std::uint64_t columns = reachable(sizes.width, target.count, step);
  const std::uint64_t rows = reachable(entriesOf(table, sizes.height), target.count, targetStride);
  for (std::uint64_t x = 0; x < columns; ++x) {
    for (std::uint64_t y = 0; y < rows; ++y) {
      const QAVMMContribution& entry = table.contributions[y];
      const Position first = Position{static_cast<unsigned>(entry.left)} * source.rowStride + Position{x} * step;
      resamplePixel(source, first, sourceStride, target, Position{y} * targetStride + x * step, channels, entry);
    }
  }
}

void expandBitRowsDirectly(const ImageSamples<unsigned char>& source, const ImageSamples<unsigned char>& target,
                           const PassSizes& sizes, const QAVMMWeightsTable& table) {
  forEachInRows(target, 1, sizes, table, [&](std::uint64_t row, const QAVMMContribution& entry, Position to) {
    double sum = 0.0;
    for (int j = entry.left; j <= entry.right; ++j) {
      const unsigned char bits = sampleAt(source, Position{row} * source.rowStride + static_cast<unsigned>(j >> 3));
      sum += (bits & (0x80 >> (j & 7)) ? 1.0 : 0.0) * entry.weights[j - entry.left];
    }
    target.data[static_cast<std::size_t>(to)] = byteFrom(sum * 255.0 + 0.5);
  });
}

template void resampleRowsDirectly(const ImageSamples<unsigned char>&, const ImageSamples<unsigned char>&, int,
                                   const PassSizes&, const QAVMMWeightsTable&);
template void resampleRowsDirectly(const ImageSamples<float>&, const ImageSamples<float>&, int, const PassSizes&,
                                   const QAVMMWeightsTable&);
template void resampleColumnsDirectly(const ImageSamples<unsigned char>&, const ImageSamples<unsigned char>&, int,
                                      const PassSizes&, const QAVMMWeightsTable&);
template void resampleColumnsDirectly(const ImageSamples<float>&, const ImageSamples<float>&, int, const PassSizes&,
                                      const QAVMMWeightsTable&);

}  // namespace qav
