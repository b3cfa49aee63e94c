#include "comparison/ColourDifferences.h"

#include "kernels/ChannelPlanes.h"
#include "kernels/ColourDifference.h"
#include "kernels/ColourMatrices.h"

#include <QAVMMColorTransform.h>
#include <QAVMMPIPixelColorSpec.h>
#include <QAVMath3x3Matrix.h>

#include <algorithm>
#include <array>
#include <memory>
#include <span>

namespace qav {
namespace {

using kernels::ColourPairs;
using Lab = std::array<double, 3>;

struct ReleaseSpace {
  void operator()(QAVMMPIColorSpace* space) const { space->Release(); }
};
using XyzSpace = std::unique_ptr<QAVMMPIColorSpace, ReleaseSpace>;

XyzSpace makeXyzSpace() {
  XyzSpace space(QAVMMPIColorSpace::CreateColorSpace());
  space->kind = 10;
  return space;
}

Lab plainLab(const QAVMMPIColorSpace& xyzSpace, const unsigned char* rgb) {
  const double in[3] = {double(rgb[0]), double(rgb[1]), double(rgb[2])};
  double xyz[3];
  QAVMath3x3Matrix(kRgbToXyz).Multiply(in, xyz);
  for (double& component : xyz) component /= 255.0;
  Lab lab{};
  QAVMMColorTransform::DoTransformToLab(&xyzSpace, xyz, lab.data());
  return lab;
}

// Differing pixels on their way through the kernels.
class Batch {
 public:
  explicit Batch(std::size_t stride) noexcept : stride_(stride) {}

  // At most ColourPairs::kCapacity positions.
  void Run(const unsigned char* first, const unsigned char* second, std::span<const std::uint32_t> positions,
           double* differences) {
    Gather(first, positions, pairs_.rgb[0]);
    Gather(second, positions, pairs_.rgb[1]);
    Compute(positions.size());
    const double* difference = pairs_.difference;
    for (const std::uint32_t position : positions)
      differences[position] = Decided(*difference++, first + position * stride_, second + position * stride_);
  }

  // Pixels that follow one another, as long as they differ; returns how many it did. For strides of 3 and 4.
  std::size_t RunWhileAllDiffer(const unsigned char* first, const unsigned char* second, std::size_t pixels,
                                double* differences) {
    for (std::size_t done = 0; done < pixels;) {
      const std::size_t count = std::min(ColourPairs::kCapacity, pixels - done);
      if (!RunIfAllDiffer(first + done * stride_, second + done * stride_, count, differences + done)) return done;
      done += count;
    }
    return pixels;
  }

 private:
  bool RunIfAllDiffer(const unsigned char* first, const unsigned char* second, std::size_t pixels,
                      double* differences) {
    for (int channel = 0; channel < 3; ++channel) {
      const auto extract = qav::kernels::channelPlanesKernels().extract;
      extract(first, static_cast<int>(stride_), channel, pixels, pairs_.rgb[0][channel]);
      extract(second, static_cast<int>(stride_), channel, pixels, pairs_.rgb[1][channel]);
    }
    if (!kernels_.allDiffer(pairs_, pixels)) return false;
    Compute(pixels);
    for (std::size_t i = 0; i < pixels; ++i)
      differences[i] = Decided(pairs_.difference[i], first + i * stride_, second + i * stride_);
    return true;
  }
  void Compute(std::size_t count) {
    kernels_.toLab(pairs_, count);
    kernels_.deltaE2000(pairs_, count);
  }
  static double Decided(double difference, const unsigned char* first, const unsigned char* second) {
    return difference < 0.0 ? plainColourDifference(first, second) : difference;
  }
  void Gather(const unsigned char* pixels, std::span<const std::uint32_t> positions,
              std::uint8_t (&rgb)[3][ColourPairs::kCapacity]) const {
    for (std::size_t i = 0; i < positions.size(); ++i)
      for (std::size_t channel = 0; channel < 3; ++channel) rgb[channel][i] = pixels[positions[i] * stride_ + channel];
  }
  const kernels::ColourDifferenceKernels& kernels_ = kernels::colourDifferenceKernels();
  std::size_t stride_;
  ColourPairs pairs_{};
};

}  // namespace

double plainColourDifference(const unsigned char* first, const unsigned char* second) {
  static constexpr double kWeights[3] = {1.0, 1.0, 1.0};
  const XyzSpace space = makeXyzSpace();
  const Lab a = plainLab(*space, first), b = plainLab(*space, second);
  double difference = 0.0;
  QAVMMColorTransform::ComputeDeltaE(a.data(), b.data(), DELTA_E_CIEDE2000, difference, 3.0, kWeights);
  return difference;
}

void colourDifferences(const unsigned char* first, const unsigned char* second, std::size_t pixels, std::size_t stride,
                       double* differences) {
  constexpr std::size_t kStrip = 4096;
  std::uint32_t positions[kStrip];
  Batch batch(stride);
  // Pictures mostly differ everywhere or in few places: what the last strip was decides what the next one is tried for.
  bool dense = true;
  for (std::size_t from = 0; from < pixels;) {
    const unsigned char *const a = first + from * stride, *const b = second + from * stride;
    const std::size_t count = std::min(kStrip, pixels - from);
    if (dense && stride <= 4) {
      const std::size_t done = batch.RunWhileAllDiffer(a, b, count, differences + from);
      from += done;
      dense = done == count;
      continue;
    }
    const std::size_t different = kernels::colourDifferenceKernels().findDifferent(a, b, count, stride, positions);
    dense = different == count;
    std::fill_n(differences + from, count, 0.0);
    for (std::size_t i = 0; i < different; i += ColourPairs::kCapacity)
      batch.Run(a, b, {positions + i, std::min(ColourPairs::kCapacity, different - i)}, differences + from);
    from += count;
  }
}

}  // namespace qav
