#include "resampling/StripPasses.h"

#include "kernels/AlignedArray.h"
#include "kernels/ByteResampling.h"
#include "kernels/FloatResampling.h"
#include "resampling/ByteWeightPlan.h"
#include "resampling/RowStretches.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace qav {
namespace {

// The two passes over bytes, as the strips below drive them.
class BytePasses {
 public:
  using Sample = unsigned char;

  explicit BytePasses(const StripJob<Sample>& job) : pixels_(job.sourceWidth), channels_(job.channels) {
    using Order = ByteWeightPlan::Order;
    if (!job.vertical.empty()) vertical_.emplace(job.vertical, Order::Singles, kernels_.digitBits);
    if (job.horizontal.empty()) return;
    horizontal_.emplace(job.horizontal, Order::Fours, kernels_.digitBits);
    stretches_ = rowStretches<kernels::ByteTaps>(horizontal_->taps, kernels_.stretches);
    scratch_ = makeAlignedArray<std::uint8_t>(scratchFor(stretches_, kernels_.stretches));
  }

  std::size_t rowsAtOnce() const { return kernels_.rowsAtOnce; }
  void resampleRows(const Sample* const* in, std::size_t count, std::size_t, Sample* const* out) {
    kernels_.rows({in, count, pixels_, channels_}, horizontal_->taps.data(), horizontal_->weights, stretches_.data(),
                  stretches_.size(), out, scratch_.get());
  }
  const kernels::ByteTaps& verticalTaps(std::size_t y) const { return vertical_->taps[y]; }
  static std::size_t rowsLookedAt(const kernels::ByteTaps& taps) {
    return static_cast<std::size_t>(std::max(taps.count, 4 * taps.groups));
  }
  void resampleColumns(const Sample* const* rows, std::size_t first, std::size_t end, std::size_t y,
                       Sample* out) const {
    kernels_.columns(rows, first, end, vertical_->taps[y], vertical_->weights, out);
  }

 private:
  const kernels::ByteResamplingKernels& kernels_ = kernels::byteResamplingKernels();
  std::size_t pixels_;
  int channels_;
  std::optional<ByteWeightPlan> horizontal_;
  std::optional<ByteWeightPlan> vertical_;
  std::vector<kernels::RowStretch> stretches_;
  AlignedArray<std::uint8_t> scratch_;
};

class FloatPasses {
 public:
  using Sample = float;

  explicit FloatPasses(const StripJob<Sample>& job)
      : channels_(job.channels), horizontal_(tapsOf(job.horizontal)), vertical_(tapsOf(job.vertical)) {
    stretches_ = rowStretches<kernels::FloatTaps>(horizontal_, kernels_.stretches);
    scratch_ = makeAlignedArray<double>(scratchFor(stretches_, kernels_.stretches));
  }

  std::size_t rowsAtOnce() const { return kernels_.rowsAtOnce; }
  // The rows that come next lie `ahead` samples further on.
  void resampleRows(const Sample* const* in, std::size_t count, std::size_t ahead, Sample* const* out) {
    kernels_.rows({in, count, channels_, ahead}, horizontal_.data(), stretches_.data(), stretches_.size(), out,
                  scratch_.get());
  }
  const kernels::FloatTaps& verticalTaps(std::size_t y) const { return vertical_[y]; }
  static std::size_t rowsLookedAt(const kernels::FloatTaps& taps) { return static_cast<std::size_t>(taps.count); }
  void resampleColumns(const Sample* const* rows, std::size_t first, std::size_t end, std::size_t y,
                       Sample* out) const {
    kernels_.columns(rows, first, end, vertical_[y], out);
  }

 private:
  static std::vector<kernels::FloatTaps> tapsOf(std::span<const QAVMMContribution> entries) {
    std::vector<kernels::FloatTaps> taps(entries.size());
    for (std::size_t i = 0; i < taps.size(); ++i) {
      const QAVMMContribution& entry = entries[i];
      if (entry.left <= entry.right) taps[i] = {entry.weights, entry.left, entry.right - entry.left + 1};
    }
    return taps;
  }

  const kernels::FloatResamplingKernels& kernels_ = kernels::floatResamplingKernels();
  int channels_;
  std::vector<kernels::FloatTaps> horizontal_;
  std::vector<kernels::FloatTaps> vertical_;
  std::vector<kernels::RowStretch> stretches_;
  AlignedArray<double> scratch_;
};

// Some output rows of the vertical pass together, in parts of their width: so the source rows that they share are read
// from the first-level cache.
template <class Passes>
class ColumnPass {
 public:
  using Sample = typename Passes::Sample;

  ColumnPass(const Passes& passes, std::size_t samples) : passes_(passes), samples_(samples) {}

  // Output rows first to end - 1; rowAt(i) is where source row i stands, outAt(y) where output row y goes.
  template <class RowAt, class OutAt>
  void run(std::size_t first, std::size_t end, RowAt rowAt, OutAt outAt) {
    rows_.clear();
    for (std::size_t y = first; y < end; ++y) addRowsOf(y, rowAt);
    constexpr std::size_t kPart = 4096 / sizeof(Sample);
    for (std::size_t at = 0; at < samples_;) {
      // The last part is the longest, none is too short for whole vectors.
      const std::size_t behind = samples_ - at < 2 * kPart ? samples_ : at + kPart;
      const Sample* const* rows = rows_.data();
      for (std::size_t y = first; y < end; ++y) {
        passes_.resampleColumns(rows, at, behind, y, outAt(y));
        rows += Passes::rowsLookedAt(passes_.verticalTaps(y));
      }
      at = behind;
    }
  }

 private:
  template <class RowAt>
  void addRowsOf(std::size_t y, RowAt rowAt) {
    const auto& taps = passes_.verticalTaps(y);
    const auto count = static_cast<std::size_t>(taps.count);
    for (std::size_t t = 0; t < count; ++t) rows_.push_back(rowAt(static_cast<std::size_t>(taps.left) + t));
    // Stand-ins for taps of weight 0.
    for (std::size_t t = count; t < Passes::rowsLookedAt(taps); ++t) rows_.push_back(rows_.back());
  }

  const Passes& passes_;
  std::size_t samples_;
  std::vector<const Sample*> rows_;
};

// Output rows that the vertical pass makes together, where as many are ready.
constexpr std::size_t kRowsTogether = 16;

// Calls body(first, count) for strips of as many rows as the horizontal pass takes.
template <class Body>
void inStrips(std::size_t rows, std::size_t atOnce, Body body) {
  for (std::size_t first = 0; first < rows; first += atOnce) body(first, std::min(atOnce, rows - first));
}

template <class Sample>
std::vector<Sample*> addresses(Sample* first, std::size_t stride, std::size_t count) {
  std::vector<Sample*> rows(count);
  for (std::size_t r = 0; r < count; ++r) rows[r] = first + r * stride;
  return rows;
}

template <class Sample>
std::size_t sourceStride(const StripJob<Sample>& job) {
  return job.sourceWidth * static_cast<std::size_t>(job.channels);
}
template <class Sample>
std::size_t targetStride(const StripJob<Sample>& job) {
  return job.width * static_cast<std::size_t>(job.channels);
}

// From a strip of source rows to the next one, where that is whole.
template <class Sample>
std::size_t distanceToNext(const StripJob<Sample>& job, std::size_t first, std::size_t count) {
  return job.sourceHeight - first >= 2 * count ? count * sourceStride(job) : 0;
}

// Samples from row to row of memory of our own, so that all rows begin at the start of a cache line.
template <class Sample>
std::size_t alignedStride(std::size_t samples) {
  constexpr std::size_t kLine = 64 / sizeof(Sample);
  return (samples + kLine - 1) / kLine * kLine;
}

template <class Passes, class Sample>
void resampleRowsOnly(const StripJob<Sample>& job, Passes& passes) {
  inStrips(job.height, passes.rowsAtOnce(), [&](std::size_t first, std::size_t count) {
    const auto in = addresses(job.source + first * sourceStride(job), sourceStride(job), count);
    const auto out = addresses(job.target + first * targetStride(job), targetStride(job), count);
    passes.resampleRows(in.data(), count, distanceToNext(job, first, count), out.data());
  });
}

template <class Passes, class Sample>
void resampleColumnsOnly(const StripJob<Sample>& job, Passes& passes) {
  ColumnPass<Passes> columns(passes, sourceStride(job));
  inStrips(job.height, kRowsTogether, [&](std::size_t first, std::size_t count) {
    columns.run(
        first, first + count, [&](std::size_t row) { return job.source + row * sourceStride(job); },
        [&](std::size_t y) { return job.target + y * targetStride(job); });
  });
}

template <class Passes, class Sample>
void resampleColumnsThenRows(const StripJob<Sample>& job, Passes& passes) {
  ColumnPass<Passes> columns(passes, sourceStride(job));
  const std::size_t stride = alignedStride<Sample>(sourceStride(job));
  const AlignedArray<Sample> strip = makeAlignedArray<Sample>(passes.rowsAtOnce() * stride);
  inStrips(job.height, passes.rowsAtOnce(), [&](std::size_t first, std::size_t count) {
    const auto between = addresses(strip.get(), stride, count);
    columns.run(
        first, first + count, [&](std::size_t row) { return job.source + row * sourceStride(job); },
        [&](std::size_t y) { return between[y - first]; });
    const auto out = addresses(job.target + first * targetStride(job), targetStride(job), count);
    passes.resampleRows(between.data(), count, 0, out.data());
  });
}

// Which source rows each output row and the ones after it still look at.
struct RowNeeds {
  template <class Passes>
  RowNeeds(const Passes& passes, std::size_t height) : from(height), upTo(height) {
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (std::size_t y = height; y-- > 0;) {
      const auto& taps = passes.verticalTaps(y);
      if (taps.count > 0) least = std::min(least, static_cast<std::size_t>(taps.left));
      from[y] = least;
    }
    std::size_t end = 0;
    for (std::size_t y = 0; y < height; ++y) {
      const auto& taps = passes.verticalTaps(y);
      if (taps.count > 0) end = std::max(end, static_cast<std::size_t>(taps.left + taps.count));
      upTo[y] = end;
      if (end > from[y]) most = std::max(most, end - from[y]);
    }
  }
  std::vector<std::size_t> from;
  std::vector<std::size_t> upTo;  // exclusive
  std::size_t most = 0;
};

template <class Passes, class Sample>
void resampleRowsThenColumns(const StripJob<Sample>& job, Passes& passes) {
  ColumnPass<Passes> columns(passes, targetStride(job));
  const RowNeeds needs(passes, job.height);
  // Row r of the intermediate image stands in slot r % slots until no output row needs it any more.
  const std::size_t slots = needs.most + passes.rowsAtOnce(), stride = alignedStride<Sample>(targetStride(job));
  const AlignedArray<Sample> ring = makeAlignedArray<Sample>(slots * stride);
  const auto slotOf = [&](std::size_t row) { return ring.get() + row % slots * stride; };
  std::size_t done = 0;
  for (std::size_t y = 0; y < job.height;) {
    done = std::max(done, std::min(needs.from[y], needs.upTo[y]));
    while (done < needs.upTo[y]) {
      const std::size_t count = std::min(passes.rowsAtOnce(), job.sourceHeight - done);
      const auto in = addresses(job.source + done * sourceStride(job), sourceStride(job), count);
      std::vector<Sample*> out(count);
      for (std::size_t r = 0; r < count; ++r) out[r] = slotOf(done + r);
      passes.resampleRows(in.data(), count, distanceToNext(job, done, count), out.data());
      done += count;
    }
    std::size_t end = y + 1;
    while (end < job.height && end - y < kRowsTogether && needs.upTo[end] <= done) ++end;
    columns.run(y, end, slotOf, [&](std::size_t row) { return job.target + row * targetStride(job); });
    y = end;
  }
}

template <class Passes, class Sample>
void resample(const StripJob<Sample>& job) {
  Passes passes(job);
  if (job.vertical.empty())
    resampleRowsOnly(job, passes);
  else if (job.horizontal.empty())
    resampleColumnsOnly(job, passes);
  else if (job.verticalFirst)
    resampleColumnsThenRows(job, passes);
  else
    resampleRowsThenColumns(job, passes);
}

}  // namespace

template <>
void resampleInStrips(const StripJob<unsigned char>& job) {
  resample<BytePasses>(job);
}

template <>
void resampleInStrips(const StripJob<float>& job) {
  resample<FloatPasses>(job);
}

}  // namespace qav
