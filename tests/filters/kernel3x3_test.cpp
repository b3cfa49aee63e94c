#include "kernels/Kernel3x3.h"

#include "filters/FilterReference.h"
#include "support/Test.h"

namespace qav::test {
namespace {

using kernels::RowFilter;

struct Window {
  int corners, edges, centre;
};

// Neighbourhoods side by side, nine samples each, of which the middle one is looked at.
class Windows {
 public:
  explicit Windows(const float* weights) : weights_(weights) {}

  void add(Window w) {
    const auto part = [](int sum, int i) { return (sum + i) / 4; };
    const int n[9] = {part(w.corners, 0), part(w.edges, 0),   part(w.corners, 1), part(w.edges, 1),  w.centre,
                      part(w.edges, 2),   part(w.corners, 2), part(w.edges, 3),   part(w.corners, 3)};
    for (int i = 0; i < 9; ++i) rows_[i / 3].push_back(static_cast<std::uint8_t>(n[i]));
    expected_.push_back(weigh(weights_, n));
    windows_.push_back(w);
  }

  // The first window that `filter` gets wrong, or -1.
  std::ptrdiff_t firstWrong(const RowFilter& filter) const {
    const std::size_t count = rows_[0].size();
    const kernels::RowShape shape(nullptr, count, 1);
    std::vector<std::uint8_t> partials[3], top = rows_[0], out = rows_[1];
    for (auto& p : partials) p.resize(filter.partialBytes(shape));
    const auto at = [&](int i) { return partials[i].data(); };
    filter.prepare(rows_[0].data(), shape, at(0));
    filter.advance(rows_[1].data(), shape, at(0), at(0), at(1), top.data());
    filter.advance(rows_[2].data(), shape, at(0), at(1), at(2), out.data());
    for (std::size_t i = 0; i < expected_.size(); ++i)
      if (out[3 * i + 1] != expected_[i]) return static_cast<std::ptrdiff_t>(i);
    return -1;
  }
  const Window& operator[](std::ptrdiff_t i) const { return windows_[static_cast<std::size_t>(i)]; }

 private:
  const float* weights_;
  std::vector<std::uint8_t> rows_[3];
  std::vector<std::uint8_t> expected_;
  std::vector<Window> windows_;
};

constexpr int kMostOfFour = 4 * 255;

void everyRingAndCentre(Windows& windows) {
  for (int ring = 0; ring <= 2 * kMostOfFour; ++ring)
    for (int c = 0; c < 256; ++c) windows.add({ring / 2, ring - ring / 2, c});
}

void everyEdgesAndCentre(Windows& windows) {
  for (int e = 0; e <= kMostOfFour; ++e)
    for (int c = 0; c < 256; ++c) windows.add({(e * 7 + c) % (kMostOfFour + 1), e, c});
}

// Every sum of these kernels' whole (or sixteenths of whole) products: the edges step by two, the corners fill in.
void everySum(Windows& windows) {
  for (int x : {0, 1, 510, kMostOfFour - 1, kMostOfFour})
    for (int e = 0; e <= kMostOfFour; ++e)
      for (int c = 0; c < 256; c += 51) windows.add({x, e, c});
}

// The edges add a whole number, and the integer form adds the same, so it is enough to try those that bring the sum to
// both ends of the byte range.
void everyCornersAndCentre(Windows& windows) {
  const double w = kDiagonal, centreWeight = -6.8284273f;
  for (int x = 0; x <= kMostOfFour; ++x)
    for (int c = 0; c < 256; ++c)
      for (double target : {0.0, 255.0}) {
        const int nearest = static_cast<int>(std::ceil(target - (w * x + centreWeight * c)));
        for (int e = nearest - 1; e <= nearest + 1; ++e) windows.add({x, std::clamp(e, 0, kMostOfFour), c});
      }
}

TEST(Kernel3x3, IntegerFormsGiveTheExactSumTruncated) {
  using Kernels = kernels::Kernel3x3Kernels;
  const struct {
    QAVMMIFilterType type;
    RowFilter Kernels::*filter;
    void (*cover)(Windows&);
  } cases[] = {
      {QAVMMIFilterSmoothBox, &Kernels::box, everyRingAndCentre},
      {QAVMMIFilterSmoothLight, &Kernels::light, everyRingAndCentre},
      {QAVMMIFilterSmoothGauss, &Kernels::gauss, everySum},
      {QAVMMIFilterSmoothCentre, &Kernels::centre, everyRingAndCentre},
      {QAVMMIFilterSharpenLight, &Kernels::sharpenLight, everyEdgesAndCentre},
      {QAVMMIFilterSharpenMedium, &Kernels::sharpenMedium, everyEdgesAndCentre},
      {QAVMMIFilterSharpen, &Kernels::sharpen, everyEdgesAndCentre},
      {QAVMMIFilterSharpenCross, &Kernels::sharpenCross, everySum},
      {QAVMMIFilterSharpenStrong, &Kernels::sharpenStrong, everyRingAndCentre},
      {QAVMMIFilterLaplace, &Kernels::laplace, everyCornersAndCentre},
  };
  for (const auto& c : cases) {
    const auto* definition = std::find_if(std::begin(kKernelDefinitions), std::end(kKernelDefinitions),
                                          [&](const KernelDefinition& d) { return d.type == c.type; });
    Windows windows(definition->weights);
    c.cover(windows);
    atEveryLevel([&] {
      const auto wrong = windows.firstWrong(kernels::kernel3x3Kernels().*c.filter);
      if (wrong >= 0)
        ADD_FAILURE() << "type " << c.type << ": corners " << windows[wrong].corners << ", edges "
                      << windows[wrong].edges << ", centre " << windows[wrong].centre;
    });
  }
}

}  // namespace
}  // namespace qav::test
