#include "resampling/StripPasses.h"

#include "kernels/AlignedArray.h"
#include "kernels/ByteResampling.h"
#include "kernels/FloatResampling.h"
#include "resampling/ByteWeightPlan.h"
#include "resampling/FloatWeightPlan.h"
#include "resampling/RowStretches.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace qav {
namespace {

template <class Sample>
std::vector<Sample*> addresses(Sample* first, std::size_t stride, std::size_t count) {
  std::vector<Sample*> rows(count);
  for (std::size_t r = 0; r < count; ++r) rows[r] = first + r * stride;
  return rows;
}

// The source rows that some output rows look at.
struct Span {
  std::size_t left = 0;
  std::size_t count = 0;
};

// The two passes over bytes, as the strips below drive them.
class BytePasses {
 public:
  using Sample = unsigned char;

  explicit BytePasses(const StripJob<Sample>& job) {
    using Order = ByteWeightPlan::Order;
    if (!job.vertical.empty()) vertical_.emplace(job.vertical, Order::Singles, kernels_.digitBits);
    if (job.horizontal.empty()) return;
    horizontal_.emplace(job.horizontal, Order::Fours, kernels_.digitBits);
    rows_.taps = horizontal_->taps.data();
    rows_.width = job.horizontal.size();
    rows_.weights = horizontal_->weights;
    rows_.run = readableRun(job);
    addAllStretches();
    scratch_ = makeAlignedArray<std::uint8_t>(scratchFor(stretches_, kernels_.stretches));
  }

  std::size_t rowsAtOnce() const { return kernels_.rowsAtOnce; }
  void resampleRows(const kernels::SourceRows<Sample>& in, Sample* const* out) {
    kernels_.rows(in, rows_, out, scratch_.get());
  }

  static std::size_t outputsTogether() { return 1; }
  static std::size_t outputsAt(std::size_t, std::size_t) { return 1; }
  Span sourcesOf(std::size_t y, std::size_t) const {
    const kernels::ByteTaps& taps = vertical_->taps[y];
    return {static_cast<std::size_t>(taps.left), static_cast<std::size_t>(taps.count)};
  }
  // Those behind the source rows stand for taps of weight 0.
  std::size_t rowsLookedAt(std::size_t y, std::size_t) const {
    const kernels::ByteTaps& taps = vertical_->taps[y];
    return static_cast<std::size_t>(std::max(taps.count, 4 * taps.groups));
  }
  void resampleColumns(const Sample* const* rows, std::size_t y, std::size_t, std::size_t first, std::size_t end,
                       Sample* const* out) const {
    kernels_.columns(rows, first, end, vertical_->taps[y], vertical_->weights, out[0]);
  }

 private:
  // As much of the run as vectors of pixels may be read for that do not reach behind a row.
  kernels::ByteRun readableRun(const StripJob<Sample>& job) const {
    constexpr std::size_t kWidestVector = 64, kLanes = kWidestVector / 16;
    const std::vector<kernels::ByteTaps>& taps = horizontal_->taps;
    kernels::ByteRun run = horizontal_->run;
    if (kernels::digitsOf(taps[run.first].sum) > kernels_.digitsOfRuns) return {};
    const auto channels = static_cast<std::size_t>(job.channels);
    const auto endsReadable = [&] {
      const std::size_t periods = (run.end - run.first) / run.period - kLanes;
      const auto begins = static_cast<std::size_t>(*std::max_element(run.begins, run.begins + run.period));
      const std::size_t lastVector = begins + periods * static_cast<std::size_t>(run.step);
      const std::size_t lastGroup = lastVector + 4 * static_cast<std::size_t>(run.groups - 1);
      return lastGroup * channels + kWidestVector <= job.sourceWidth * channels;
    };
    while (run.end > run.first && !endsReadable()) run.end -= kernels::ByteRun::kPositions;
    return run;
  }

  void addAllStretches() {
    const std::span<const kernels::ByteTaps> taps = horizontal_->taps;
    const std::size_t step = kernels_.stretches.step;
    std::size_t end = 0;
    if (rows_.run.first < rows_.run.end) {
      addStretches(taps, 0, (rows_.run.first + step - 1) / step * step, kernels_.stretches, stretches_);
      end = rows_.run.end / step * step;
    }
    addStretches(taps, end, rows_.width, kernels_.stretches, stretches_);
    rows_.stretches = stretches_.data();
    rows_.stretchCount = stretches_.size();
  }

  const kernels::ByteResamplingKernels& kernels_ = kernels::byteResamplingKernels();
  std::optional<ByteWeightPlan> horizontal_;
  std::optional<ByteWeightPlan> vertical_;
  kernels::ByteRowPlan rows_;
  std::vector<kernels::RowStretch> stretches_;
  AlignedArray<std::uint8_t> scratch_;
};

class FloatPasses {
 public:
  using Sample = float;

  explicit FloatPasses(const StripJob<Sample>& job) : horizontal_(job.horizontal), vertical_(job.vertical) {
    if (kernels_.takesRuns) horizontal_.addRun();
  }

  std::size_t rowsAtOnce() const { return kernels_.rowsAtOnce; }
  void resampleRows(const kernels::SourceRows<Sample>& in, Sample* const* out) const {
    kernels_.rows(in, {horizontal_.taps.data(), horizontal_.taps.size(), horizontal_.run}, out);
  }

  std::size_t outputsTogether() const { return kernels_.outputsTogether; }
  std::size_t outputsAt(std::size_t y, std::size_t end) const {
    const std::size_t together = outputsTogether();
    return end - y >= together && kernels::overlapInOrder(&vertical_.taps[y], together) ? together : 1;
  }
  Span sourcesOf(std::size_t y, std::size_t count) const {
    const std::int32_t left = vertical_.taps[y].left;
    return {static_cast<std::size_t>(left), static_cast<std::size_t>(vertical_.taps[y + count - 1].behind() - left)};
  }
  std::size_t rowsLookedAt(std::size_t y, std::size_t count) const { return sourcesOf(y, count).count; }
  void resampleColumns(const Sample* const* rows, std::size_t y, std::size_t count, std::size_t first, std::size_t end,
                       Sample* const* out) const {
    kernels_.columns({rows, &vertical_.taps[y], count}, first, end, out);
  }

 private:
  const kernels::FloatResamplingKernels& kernels_ = kernels::floatResamplingKernels();
  FloatWeightPlan horizontal_;
  FloatWeightPlan vertical_;
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
    out_.clear();
    for (std::size_t y = first; y < end; ++y) out_.push_back(outAt(y));
    rows_.clear();
    groups_.clear();
    for (std::size_t y = first; y < end; y += groups_.back().count) addGroup(y, passes_.outputsAt(y, end), rowAt);
    constexpr std::size_t kPart = 4096 / sizeof(Sample);
    for (std::size_t at = 0; at < samples_;) {
      // The last part is the longest, none is too short for whole vectors.
      const std::size_t behind = samples_ - at < 2 * kPart ? samples_ : at + kPart;
      for (const Group& group : groups_)
        passes_.resampleColumns(rows_.data() + group.rows, group.y, group.count, at, behind, &out_[group.y - first]);
      at = behind;
    }
  }

 private:
  // Output rows that are made side by side, and where the list of their source rows begins.
  struct Group {
    std::size_t y;
    std::size_t count;
    std::size_t rows;
  };

  template <class RowAt>
  void addGroup(std::size_t y, std::size_t count, RowAt rowAt) {
    groups_.push_back({y, count, rows_.size()});
    const Span sources = passes_.sourcesOf(y, count);
    for (std::size_t i = 0; i < sources.count; ++i) rows_.push_back(rowAt(sources.left + i));
    for (std::size_t i = sources.count; i < passes_.rowsLookedAt(y, count); ++i) rows_.push_back(rows_.back());
  }

  const Passes& passes_;
  std::size_t samples_;
  std::vector<Sample*> out_;
  std::vector<const Sample*> rows_;
  std::vector<Group> groups_;
};

// Output rows that the vertical pass makes together, where as many are ready.
constexpr std::size_t kRowsTogether = 16;

// Calls body(first, count) for strips of as many rows as the horizontal pass takes.
template <class Body>
void inStrips(std::size_t rows, std::size_t atOnce, Body body) {
  for (std::size_t first = 0; first < rows; first += atOnce) body(first, std::min(atOnce, rows - first));
}

template <class Sample>
std::size_t sourceStride(const StripJob<Sample>& job) {
  return job.sourceWidth * static_cast<std::size_t>(job.channels);
}
template <class Sample>
std::size_t targetStride(const StripJob<Sample>& job) {
  return job.width * static_cast<std::size_t>(job.channels);
}

template <class Sample>
kernels::SourceRows<Sample> sourceRows(const StripJob<Sample>& job, std::size_t first, std::size_t count) {
  const std::size_t stride = sourceStride(job), ahead = job.sourceHeight - first >= 2 * count ? count * stride : 0;
  const bool room = first + count < job.sourceHeight;
  return {job.source + first * stride, stride, count, job.sourceWidth, job.channels, ahead, room};
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
    const auto out = addresses(job.target + first * targetStride(job), targetStride(job), count);
    passes.resampleRows(sourceRows(job, first, count), out.data());
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
  const std::size_t samples = passes.rowsAtOnce() * stride + 1;  // with room
  const AlignedArray<Sample> strip = makeAlignedArray<Sample>(samples);
  std::fill_n(strip.get(), samples, Sample());
  inStrips(job.height, passes.rowsAtOnce(), [&](std::size_t first, std::size_t count) {
    const auto between = addresses(strip.get(), stride, count);
    columns.run(
        first, first + count, [&](std::size_t row) { return job.source + row * sourceStride(job); },
        [&](std::size_t y) { return between[y - first]; });
    const auto out = addresses(job.target + first * targetStride(job), targetStride(job), count);
    passes.resampleRows({strip.get(), stride, count, job.sourceWidth, job.channels, 0, true}, out.data());
  });
}

// Which source rows each output row and the ones after it still look at.
struct RowNeeds {
  template <class Passes>
  RowNeeds(const Passes& passes, std::size_t height) : from(height), upTo(height) {
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (std::size_t y = height; y-- > 0;) {
      const Span sources = passes.sourcesOf(y, 1);
      if (sources.count > 0) least = std::min(least, sources.left);
      from[y] = least;
    }
    std::size_t end = 0;
    for (std::size_t y = 0; y < height; ++y) {
      const Span sources = passes.sourcesOf(y, 1);
      if (sources.count > 0) end = std::max(end, sources.left + sources.count);
      upTo[y] = end;
    }
    for (std::size_t y = 0; y < height; ++y) {
      const std::size_t behind = upTo[std::min(y + passes.outputsTogether(), height) - 1];
      if (behind > from[y]) most = std::max(most, behind - from[y]);
    }
  }
  std::vector<std::size_t> from;
  std::vector<std::size_t> upTo;  // exclusive
  std::size_t most = 0;           // of as many output rows as are made side by side
};

template <class Passes, class Sample>
void resampleRowsThenColumns(const StripJob<Sample>& job, Passes& passes) {
  ColumnPass<Passes> columns(passes, targetStride(job));
  const RowNeeds needs(passes, job.height);
  const std::size_t together = passes.outputsTogether();
  // Row r of the intermediate image stands in slot r % slots until no output row needs it any more.
  const std::size_t slots = std::min(needs.most + passes.rowsAtOnce(), job.sourceHeight);
  const std::size_t stride = alignedStride<Sample>(targetStride(job));
  const AlignedArray<Sample> ring = makeAlignedArray<Sample>(slots * stride);
  const auto slotOf = [&](std::size_t row) { return ring.get() + row % slots * stride; };
  std::size_t done = 0;
  for (std::size_t y = 0; y < job.height;) {
    const std::size_t wanted = needs.upTo[std::min(y + together, job.height) - 1];
    done = std::max(done, std::min(needs.from[y], wanted));
    while (done < wanted) {
      const std::size_t count = std::min(passes.rowsAtOnce(), job.sourceHeight - done);
      std::vector<Sample*> out(count);
      for (std::size_t r = 0; r < count; ++r) out[r] = slotOf(done + r);
      passes.resampleRows(sourceRows(job, done, count), out.data());
      done += count;
    }
    std::size_t end = y;
    while (end < job.height && end - y < kRowsTogether && needs.upTo[end] <= done) ++end;
    if (end < job.height) end -= (end - y) % together;
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
