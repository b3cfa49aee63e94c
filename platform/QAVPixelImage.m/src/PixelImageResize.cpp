#include "BitonalRows.h"
#include "PixelAccess.h"
#include "PixelLayout.h"
#include "ResamplingTaps.h"

#include <QAVPixelImage.h>

#include <algorithm>
#include <limits>
#include <type_traits>

namespace {

template <class T>
T rounded(double value) {
  if constexpr (std::is_floating_point_v<T>)
    return static_cast<T>(value);
  else
    return static_cast<T>(std::clamp(value + 0.5, 0.0, static_cast<double>(std::numeric_limits<T>::max())));
}

// One output row before the horizontal pass: the weighted sum of the input rows.
template <class T>
void sumRows(const T* source, std::size_t stride, const ResamplingTaps& taps, int y, std::vector<double>& sum) {
  const ResamplingTaps::Position& position = taps.positions[static_cast<std::size_t>(y)];
  std::fill(sum.begin(), sum.end(), 0.0);
  double* const sums = sum.data();
  for (int j = 0; j < position.count; ++j) {
    const double weight = taps.weights[position.weights + static_cast<std::size_t>(j)];
    const T* row = source + static_cast<std::size_t>(position.first + j) * stride;
    for (std::size_t i = 0; i < stride; ++i) sums[i] += row[i] * weight;
  }
}

template <class T, int Channels>
void sumColumns(const double* row, const ResamplingTaps& taps, T* out) {
  for (const ResamplingTaps::Position& position : taps.positions) {
    double sum[Channels] = {};
    const double* in = row + static_cast<std::size_t>(position.first) * Channels;
    for (int j = 0; j < position.count; ++j, in += Channels)
      for (int c = 0; c < Channels; ++c) sum[c] += in[c] * taps.weights[position.weights + static_cast<std::size_t>(j)];
    for (int c = 0; c < Channels; ++c) *out++ = rounded<T>(sum[c]);
  }
}

template <class T, int Channels>
void resample(const QAVPixelImage& source, QAVPixelImage& result, QAVMMIResampleType kind) {
  const ImageSize from = sizeOf(source), to = sizeOf(result);
  const ResamplingTaps columns = makeResamplingTaps(kind, from.width, to.width);
  const ResamplingTaps rows = makeResamplingTaps(kind, from.height, to.height);
  const std::size_t stride = static_cast<std::size_t>(from.width) * Channels;
  const auto* in = reinterpret_cast<const T*>(pixelsToRead(source));
  auto* out = reinterpret_cast<T*>(pixelsToModify(result));
  std::vector<double> sum(stride);
  for (int y = 0; y < to.height; ++y, out += static_cast<std::size_t>(to.width) * Channels) {
    sumRows(in, stride, rows, y, sum);
    sumColumns<T, Channels>(sum.data(), columns, out);
  }
}

using Resampler = void (*)(const QAVPixelImage&, QAVPixelImage&, QAVMMIResampleType);

Resampler resamplerOf(PixelLayout layout) {
  if (layout.channels == 1) return resample<std::uint8_t, 1>;
  if (layout.channels == 2) return resample<std::uint8_t, 2>;
  switch (layout.bytesPerChannel) {
    case 1:
      return layout.channels == 3 ? resample<std::uint8_t, 3> : resample<std::uint8_t, 4>;
    case 2:
      return layout.channels == 3 ? resample<std::uint16_t, 3> : resample<std::uint16_t, 4>;
    default:
      return layout.channels == 3 ? resample<float, 3> : resample<float, 4>;
  }
}

ImagePtr resampledRuns(const QAVPixelImage& source, int width, int height) {
  const ImageSize size = sizeOf(source);
  const ResamplingTaps columns = makeResamplingTaps(QAVMMIResampleNearest, size.width, width);
  const ResamplingTaps rows = makeResamplingTaps(QAVMMIResampleNearest, size.height, height);
  ImagePtr result(new QAVPixelImage(width, height, BitonalRuns));
  std::vector<unsigned char> luminance(static_cast<std::size_t>(size.width));
  std::vector<unsigned char> picked(static_cast<std::size_t>(width));
  BitonalRows resultRows(width);
  for (int y = 0; y < height; ++y) {
    readBitonalRow(source, rows.positions[static_cast<std::size_t>(y)].first, size.width, luminance.data());
    for (std::size_t x = 0; x < picked.size(); ++x)
      picked[x] = luminance[static_cast<std::size_t>(columns.positions[x].first)];
    packBitonalRow(picked.data(), width, resultRows.Bitmap());
    resultRows.Store(*result, y);
  }
  return result;
}

}  // namespace

QAVPixelImage* QAVPixelImage::CreateResizedCopy(int width, int height, QAVMMIResampleType kind) {
  const bool known = kind >= QAVMMIResampleNearest && kind <= QAVMMIResampleMitchell;
  if (!known || width < 1 || height < 1 || !holdsPixels(*this) || sizeOf(*this).pixels() == 0) return nullptr;
  if (GetFormat() == BitonalRuns) return resampledRuns(*this, width, height).release();
  ImagePtr result = makeUnfilledImage(width, height, GetFormat());
  resamplerOf(pixelLayoutOf(GetFormat()))(*this, *result, kind);
  return result.release();
}
