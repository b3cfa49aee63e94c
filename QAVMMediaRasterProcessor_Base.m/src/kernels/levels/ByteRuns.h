// Positions whose weights return, as those of simple ratios of sizes do. Included inside the region, behind
// ByteColumns.h and ByteGroups.h, from the second level on.

namespace {

// The lanes of a vector are positions a period apart: they have the same digits, and their sources lie in one piece of
// a row. Four such vectors, of all positions of some periods, make a vector of bytes.
constexpr std::size_t kRunPositions = 4 * kRowsOfVector;
static_assert(ByteRun::kPositions % kRunPositions == 0);

// The rows that share the reading of digits.
constexpr std::size_t kRowsOfRun = 2;
// Where there are too few registers for the sums, reading the pixels for each group anew costs more than it saves.
constexpr int kDigitsOfRuns = QAV_KERNEL_LEVEL >= 2 ? 3 : 1;

// How the results of four vectors are packed, lane by lane one from each vector.
struct alignas(64) RunOrder {
  std::int32_t place[kRunPositions];     // of each position
  std::uint8_t position[kRunPositions];  // at each place

  constexpr explicit RunOrder(std::size_t period) : place(), position() {
    for (std::size_t i = 0; i < kRunPositions; ++i) {
      const std::size_t ofVector = kRowsOfVector * period, rest = i % ofVector;
      const std::size_t vector = i / ofVector * period + rest % period, at = rest / period * 4 + vector;
      place[i] = static_cast<std::int32_t>(at);
      position[at] = static_cast<std::uint8_t>(i);
    }
  }
};
constexpr RunOrder kRunOrders[] = {RunOrder(1), RunOrder(2), RunOrder(4)};

// Where in a vector of pixels each lane finds its four, by their samples channel by channel or by whole pixels.
struct alignas(64) LaneOrder {
  std::uint8_t samples[64];
  std::int32_t pixels[16];

  constexpr LaneOrder(std::size_t channels, std::size_t step) : samples(), pixels() {
    for (std::size_t i = 0; i < 64; ++i)
      samples[i] = static_cast<std::uint8_t>((i / 16 * step + i % 4) * channels + i % 16 / 4);
    for (std::size_t i = 0; i < 16; ++i) pixels[i] = static_cast<std::int32_t>(i / 4 * step + i % 4);
  }
};
template <int kChannels>
constexpr LaneOrder kLaneOrders[ByteRun::kLongestStep] = {LaneOrder(kChannels, 1), LaneOrder(kChannels, 2),
                                                          LaneOrder(kChannels, 3), LaneOrder(kChannels, 4)};

// Reads groups of four pixels that begin `step` pixels apart, one for each lane.
template <int kChannels>
class LaneReader {
 public:
  explicit LaneReader(std::int32_t step) : bytes_(static_cast<std::size_t>(step) * kChannels) {
    [[maybe_unused]] const LaneOrder& order = kLaneOrders<kChannels>[step - 1];
#if QAV_KERNEL_LEVEL >= 3
    order_ = _mm512_load_si512(order.samples);
#elif QAV_KERNEL_LEVEL == 2
    order_ = _mm512_load_si512(order.pixels);
#endif
  }

  [[gnu::always_inline]] U8 read(const std::uint8_t* from) const {
#if QAV_KERNEL_LEVEL >= 3
    const auto pixels = (__m512i)load<U8>(from);
    if constexpr (kChannels == 4) return (U8)_mm512_permutexvar_epi8(order_, pixels);
    return (U8)_mm512_maskz_permutexvar_epi8(0x0FFF0FFF0FFF0FFF, order_, pixels);
#elif QAV_KERNEL_LEVEL == 2
    if constexpr (kChannels == 4) return inGroups<4>((U8)_mm512_permutexvar_epi32(order_, (__m512i)load<U8>(from)));
    const __m512i two = _mm512_inserti32x4(_mm512_castsi128_si512(lane(from, 0)), lane(from, 1), 1);
    return inGroups<kChannels>((U8)_mm512_inserti32x4(_mm512_inserti32x4(two, lane(from, 2), 2), lane(from, 3), 3));
#else
    return inGroups<kChannels>((U8)_mm256_inserti128_si256(_mm256_castsi128_si256(lane(from, 0)), lane(from, 1), 1));
#endif
  }

 private:
  [[gnu::always_inline]] __m128i lane(const std::uint8_t* from, std::size_t i) const {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i * bytes_));
  }

#if QAV_KERNEL_LEVEL >= 2
  __m512i order_;
#endif
  std::size_t bytes_;
};

template <int kChannels>
[[gnu::always_inline]] inline void storeRun(std::uint8_t* to, U8 packed, const RunOrder& order) {
#if QAV_KERNEL_LEVEL >= 2
  __m512i pixels = _mm512_permutexvar_epi32(_mm512_load_si512(order.place), (__m512i)packed);
  if constexpr (kChannels == 4) return _mm512_storeu_si512(to, pixels);
  pixels = (__m512i)withoutGaps((U8)pixels);
  const __m512i dense = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15);
  _mm512_mask_storeu_epi32(to, 0x0FFF, _mm512_permutexvar_epi32(dense, pixels));
#else
  const __m256i places = _mm256_load_si256(reinterpret_cast<const __m256i*>(order.place));
  __m256i pixels = _mm256_permutevar8x32_epi32((__m256i)packed, places);
  if constexpr (kChannels == 4) return _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), pixels);
  pixels = (__m256i)withoutGaps((U8)pixels);
  pixels = _mm256_permutevar8x32_epi32(pixels, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
  _mm256_maskstore_epi32(reinterpret_cast<int*>(to), _mm256_setr_epi32(-1, -1, -1, -1, -1, -1, 0, 0), pixels);
#endif
}

// Decides the samples that are too close to call; `taps` are those of the first position.
template <int kChannels>
[[gnu::noinline]] void decideRun(const std::uint8_t* row, const ByteTaps* taps, std::uint64_t doubtful,
                                 const RunOrder& order, std::uint8_t* to) {
  for (; doubtful != 0; doubtful &= doubtful - 1) {
    const auto place = static_cast<std::size_t>(__builtin_ctzll(doubtful));
    const std::size_t index = order.position[place / 4], channel = place % 4;
    if (channel >= kChannels) continue;
    const ByteTaps& position = taps[index];
    const std::uint8_t* const from = row + static_cast<std::size_t>(position.left) * kChannels + channel;
    to[index * kChannels + channel] =
        exactSample(position, [&](std::int32_t t) { return from[static_cast<std::size_t>(t) * kChannels]; });
  }
}

// Where the sources of one of the four vectors of positions begin, in bytes.
template <int kChannels, std::size_t kPeriod>
std::size_t beginOfVector(const ByteRun& run, std::size_t vector) {
  const std::size_t lanes = vector / kPeriod * kRowsOfVector;
  return (static_cast<std::size_t>(run.begins[vector % kPeriod]) + lanes * static_cast<std::size_t>(run.step)) *
         kChannels;
}

// Where two rows have the next group of a vector of positions.
struct RunSource {
  const std::uint8_t* row;
  const std::uint8_t* other;
};

// Adds a group of two rows to the sums of vectors kVector and kVector + 1; of a pair both look at the same group.
template <std::size_t kVector, std::size_t kPeriod, bool kPaired, int kChannels, ByteSum kSum>
[[gnu::always_inline]] inline void addTwoVectors(const LaneReader<kChannels>& reader, RunSource first, RunSource second,
                                                 const std::int32_t* digits, Sum<kSum>& sum, Sum<kSum>& otherSum,
                                                 Sum<kSum>& nextSum, Sum<kSum>& otherNextSum) {
  const std::int32_t* const firstDigits = digits + kVector % kPeriod * digitsOf(kSum);
  const std::int32_t* const nextDigits = digits + (kVector + 1) % kPeriod * digitsOf(kSum);
  U8 bytes = reader.read(first.row), otherBytes = reader.read(first.other);
  sum.add(bytes, firstDigits);
  otherSum.add(otherBytes, firstDigits);
  if constexpr (!kPaired) {
    bytes = reader.read(second.row);
    otherBytes = reader.read(second.other);
  }
  nextSum.add(bytes, nextDigits);
  otherNextSum.add(otherBytes, nextDigits);
}

template <int kChannels, ByteSum kSum, std::size_t kPeriod, bool kPaired>
[[gnu::noinline]] void resampleRun(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan,
                                   std::uint8_t* const* out, Fetching& next) {
  const ByteRun run = plan.run;
  const RunOrder& order = kRunOrders[kPeriod / 2];
  const ByteWeights weights = plan.weights;
  const ByteTaps* const taps = plan.taps + run.first;
  const LaneReader<kChannels> reader(run.step);
  const auto begin = [&](std::size_t vector) { return beginOfVector<kChannels, kPeriod>(run, vector); };
  const std::size_t begin0 = begin(0), begin1 = begin(1), begin2 = begin(2), begin3 = begin(3);
  const std::size_t advance = kRunPositions / kPeriod * static_cast<std::size_t>(run.step) * kChannels;
  Fetching ahead = next;
  for (std::size_t r = 0; r < in.count; r += kRowsOfRun) {
    const std::size_t other = r + 1 < in.count ? r + 1 : r;
    const std::uint8_t *row = in.first + r * in.stride, *otherRow = in.first + other * in.stride;
    for (std::size_t x = run.first; x < run.end; x += kRunPositions, row += advance, otherRow += advance) {
      FourSums<kSum> sums(taps), otherSums(taps);
      const std::uint8_t *from = row, *otherFrom = otherRow;
      const std::int32_t* digits = run.digits;
      for (std::int32_t g = 0; g < run.groups; ++g) {
        addTwoVectors<0, kPeriod, kPaired>(reader, {from + begin0, otherFrom + begin0},
                                           {from + begin1, otherFrom + begin1}, digits, sums.s0, otherSums.s0, sums.s1,
                                           otherSums.s1);
        addTwoVectors<2, kPeriod, kPaired>(reader, {from + begin2, otherFrom + begin2},
                                           {from + begin3, otherFrom + begin3}, digits, sums.s2, otherSums.s2, sums.s3,
                                           otherSums.s3);
        digits += kPeriod * digitsOf(kSum);
        from += 4 * kChannels;
        otherFrom += 4 * kChannels;
      }
      const auto finish = [&](const FourSums<kSum>& done, std::size_t rowOf) __attribute__((always_inline)) {
        const Rounded rounded = done.rounded(weights);
        std::uint8_t* const to = out[rowOf] + x * kChannels;
        storeRun<kChannels>(to, rounded.bytes, order);
        if (rounded.doubtful) [[unlikely]]
          decideRun<kChannels>(in.first + rowOf * in.stride, plan.taps + x, rounded.doubtful, order, to);
      };
      finish(sums, r);
      finish(otherSums, other);
      ahead.portion();
    }
  }
  next = ahead;
}

template <int kChannels, ByteSum kSum>
void resampleRun(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan, std::uint8_t* const* out,
                 Fetching& next) {
  if constexpr (digitsOf(kSum) == 1)
    if (plan.run.paired) return resampleRun<kChannels, kSum, 2, true>(in, plan, out, next);
  if (plan.run.period == 1) return resampleRun<kChannels, kSum, 1, false>(in, plan, out, next);
  if (plan.run.period == 2) return resampleRun<kChannels, kSum, 2, false>(in, plan, out, next);
  resampleRun<kChannels, kSum, 4, false>(in, plan, out, next);
}

template <int kChannels>
void resampleRun(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan, std::uint8_t* const* out,
                 Fetching& next) {
  using enum ByteSum;
  const ByteSum sum = plan.taps[plan.run.first].sum;
  if (sum == OneDigit) return resampleRun<kChannels, OneDigit>(in, plan, out, next);
  if (sum == Parts) return resampleRun<kChannels, Parts>(in, plan, out, next);
  if constexpr (kDigitsOfRuns == 3) resampleRun<kChannels, ThreeDigits>(in, plan, out, next);
}

}  // namespace
