#pragma once

#include <QAVMMResamplingKernels.h>
#include <QAVMMWeightsTable.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

/// Resampling written straight from its definition, for comparison.
namespace qav::test {

inline std::vector<std::unique_ptr<QAVMMGenericFilter>> readyKernels() {
  std::vector<std::unique_ptr<QAVMMGenericFilter>> kernels;
  kernels.push_back(std::make_unique<QAVMMBoxFilter>());
  kernels.push_back(std::make_unique<QAVMMTriangleFilter>());
  kernels.push_back(std::make_unique<QAVMMCatmullRomFilter>());
  kernels.push_back(std::make_unique<QAVMMMitchellFilter>());
  kernels.push_back(std::make_unique<QAVMMLanczos2Filter>());
  kernels.push_back(std::make_unique<QAVMMLanczos3Filter>());
  kernels.push_back(std::make_unique<QAVMMGaussianFilter>());
  return kernels;
}

/// A kernel made of any function.
class FunctionFilter : public QAVMMGenericFilter {
 public:
  FunctionFilter(double halfWidth, std::function<double(double)> function)
      : QAVMMGenericFilter(halfWidth), function_(std::move(function)) {}
  double Evaluate(double x) override { return function_(x); }

 private:
  std::function<double(double)> function_;
};

template <class Sample>
Sample storedSum(double sum) {
  if constexpr (std::is_same_v<Sample, float>) return static_cast<float>(sum);
  const double v = std::trunc(sum + 0.5);
  return static_cast<Sample>(v >= 255.0 ? 255 : v >= 0.0 ? v : 0);
}

/// The sum over an entry's run of sampleAt(j) by its weights.
template <class At>
double weightedSum(const QAVMMContribution& entry, At sampleAt) {
  double sum = 0.0;
  for (int j = entry.left; j <= entry.right; ++j) sum += sampleAt(j) * entry.weights[j - entry.left];
  return sum;
}

/// One pass over `lines` lines; sample i of line l and channel c lies at l * lineStep + i * sampleStep + c.
template <class Sample>
std::vector<Sample> definedPass(const std::vector<Sample>& in, int width, int height, int channels, int target,
                                bool rows, QAVMMGenericFilter* filter) {
  const int source = rows ? width : height, lines = rows ? height : width;
  if (source == target) return in;
  const QAVMMWeightsTable table(filter, target, source);
  std::vector<Sample> out(static_cast<std::size_t>(lines) * static_cast<std::size_t>(target * channels));
  const auto place = [&](int line, int i, int c, int size) {
    return static_cast<std::size_t>((rows ? line * size + i : i * width + line) * channels + c);
  };
  for (int line = 0; line < lines; ++line)
    for (int i = 0; i < target; ++i)
      for (int c = 0; c < channels; ++c) {
        const auto sampleAt = [&](int j) { return static_cast<double>(in[place(line, j, c, source)]); };
        out[place(line, i, c, target)] = storedSum<Sample>(weightedSum(table.contributions[i], sampleAt));
      }
  return out;
}

template <class Sample>
std::vector<Sample> definedScale(const std::vector<Sample>& in, int width, int height, int channels, int toWidth,
                                 int toHeight, QAVMMGenericFilter* filter) {
  if (height * toWidth > width * toHeight)
    return definedPass(definedPass(in, width, height, channels, toHeight, false, filter), width, toHeight, channels,
                       toWidth, true, filter);
  return definedPass(definedPass(in, width, height, channels, toWidth, true, filter), toWidth, height, channels,
                     toHeight, false, filter);
}

}  // namespace qav::test
