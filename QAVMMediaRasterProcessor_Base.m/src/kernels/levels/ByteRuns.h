// Positions whose weights return with every group of four source pixels, as those of a half and a quarter of a size do.
// Included inside the region, behind ByteGroups.h, from the second level on.

namespace {

// A vector of a row's pixels holds the next group for as many positions as it has lanes, so nothing needs to be brought
// into order before. Four vectors of sums make a vector of bytes.
constexpr std::size_t kRunStep = 4 * kRowsOfVector;
static_assert(ByteRun::kStep % kRunStep == 0);

// The rows that share the reading of digits.
constexpr std::size_t kRowsOfRun = 2;
// Where there are too few registers for the sums, reading the pixels for each group anew costs more than it saves.
constexpr int kDigitsOfRuns = QAV_KERNEL_LEVEL >= 2 ? 3 : 1;

// Where result `index` of a step stands when the sums are packed: lane by lane, from each of the four vectors.
template <std::size_t kPerGroup>
constexpr std::size_t placeOf(std::size_t index) {
  const std::size_t vectors = index / (kRowsOfVector * kPerGroup) * kPerGroup,
                    rest = index % (kRowsOfVector * kPerGroup);
  return rest / kPerGroup * 4 + vectors + rest % kPerGroup;
}

template <std::size_t kPerGroup>
struct RunOrder {
  std::int32_t place[kRunStep];
  std::uint8_t index[kRunStep];  // the inverse

  constexpr RunOrder() : place(), index() {
    for (std::size_t i = 0; i < kRunStep; ++i) {
      place[i] = static_cast<std::int32_t>(placeOf<kPerGroup>(i));
      index[placeOf<kPerGroup>(i)] = static_cast<std::uint8_t>(i);
    }
  }
};
template <std::size_t kPerGroup>
alignas(64) constexpr RunOrder<kPerGroup> kRunOrder;

template <int kChannels>
[[gnu::always_inline]] inline void storeRun(std::uint8_t* to, U8 packed, const std::int32_t* places) {
#if QAV_KERNEL_LEVEL >= 2
  __m512i pixels = _mm512_permutexvar_epi32(_mm512_load_si512(places), (__m512i)packed);
  if constexpr (kChannels == 4) return _mm512_storeu_si512(to, pixels);
  pixels = (__m512i)withoutGaps((U8)pixels);
  const __m512i order = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15);
  _mm512_mask_storeu_epi32(to, 0x0FFF, _mm512_permutexvar_epi32(order, pixels));
#else
  const auto* const order = reinterpret_cast<const __m256i*>(places);
  __m256i pixels = _mm256_permutevar8x32_epi32((__m256i)packed, _mm256_load_si256(order));
  if constexpr (kChannels == 4) return _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), pixels);
  pixels = (__m256i)withoutGaps((U8)pixels);
  pixels = _mm256_permutevar8x32_epi32(pixels, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
  _mm256_maskstore_epi32(reinterpret_cast<int*>(to), _mm256_setr_epi32(-1, -1, -1, -1, -1, -1, 0, 0), pixels);
#endif
}

// Decides the samples of a step that are too close to call; `taps` are those of its first position.
template <int kChannels>
[[gnu::noinline]] void decideRun(const std::uint8_t* row, const ByteTaps* taps, std::uint64_t doubtful,
                                 const std::uint8_t* indices, std::uint8_t* to) {
  for (; doubtful != 0; doubtful &= doubtful - 1) {
    const auto place = static_cast<std::size_t>(__builtin_ctzll(doubtful));
    const std::size_t index = indices[place / 4], channel = place % 4;
    if (channel >= kChannels) continue;
    const ByteTaps& position = taps[index];
    const std::uint8_t* const from = row + static_cast<std::size_t>(position.left) * kChannels + channel;
    to[index * kChannels + channel] =
        exactSample(position, [&](std::int32_t t) { return from[static_cast<std::size_t>(t) * kChannels]; });
  }
}

// Adds the groups from `from` on to the sums of a step in one row.
template <int kChannels, std::size_t kPerGroup, ByteSum kSum>
[[gnu::always_inline]] inline void addRunGroup(const std::uint8_t* from, const std::int32_t* digits,
                                               const std::int32_t* nextDigits, FourSums<kSum>& sums) {
  constexpr std::size_t kLanes = kRowsOfVector * 4 * kChannels;
  const auto groups = [=](std::size_t vector) __attribute__((always_inline)) {
    return inGroups<kChannels>(groupsOfRow<kChannels>(from + vector * kLanes));
  };
  if constexpr (kPerGroup == 1) {
    sums.s0.add(groups(0), digits);
    sums.s1.add(groups(1), digits);
    sums.s2.add(groups(2), digits);
    sums.s3.add(groups(3), digits);
  } else {
    const U8 first = groups(0), second = groups(1);
    sums.s0.add(first, digits);
    sums.s1.add(first, nextDigits);
    sums.s2.add(second, digits);
    sums.s3.add(second, nextDigits);
  }
}

template <int kChannels, std::size_t kPerGroup, ByteSum kSum>
[[gnu::noinline]] void resampleRun(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan,
                                   std::uint8_t* const* out, Fetching& next) {
  constexpr std::size_t kGroup = 4 * kChannels;
  const auto& order = kRunOrder<kPerGroup>;
  const ByteWeights weights = plan.weights;
  const ByteTaps* const taps = plan.taps + plan.run.first;
  const std::size_t begin = static_cast<std::size_t>(taps->firstGroup) * kGroup;
  const std::size_t span = static_cast<std::size_t>(taps->groups) * kGroup;
  const std::size_t count = plan.run.end - plan.run.first;
  Fetching ahead = next;
  for (std::size_t r = 0; r < in.count; r += kRowsOfRun) {
    const std::size_t other = r + 1 < in.count ? r + 1 : r;
    const std::uint8_t *const row = in.first + r * in.stride, *const otherRow = in.first + other * in.stride;
    std::uint8_t* const to = out[r] + plan.run.first * kChannels;
    std::uint8_t* const otherTo = out[other] + plan.run.first * kChannels;
    for (std::size_t x = 0; x < count; x += kRunStep) {
      FourSums<kSum> sums(taps), otherSums(taps);
      const std::int32_t *digits = taps[0].digits, *nextDigits = taps[1].digits;
      const std::size_t at = begin + x / kPerGroup * kGroup;
      for (std::size_t group = at; group < at + span;
           group += kGroup, digits += kBetweenGroups<kSum>, nextDigits += kBetweenGroups<kSum>) {
        addRunGroup<kChannels, kPerGroup>(row + group, digits, nextDigits, sums);
        addRunGroup<kChannels, kPerGroup>(otherRow + group, digits, nextDigits, otherSums);
      }
      const auto finish = [&](const FourSums<kSum>& done, const std::uint8_t* from, std::uint8_t* rowTo)
          __attribute__((always_inline)) {
        const Rounded rounded = done.rounded(weights);
        storeRun<kChannels>(rowTo + x * kChannels, rounded.bytes, order.place);
        if (rounded.doubtful) [[unlikely]]
          decideRun<kChannels>(from, taps + x, rounded.doubtful, order.index, rowTo + x * kChannels);
      };
      finish(sums, row, to);
      finish(otherSums, otherRow, otherTo);
      ahead.portion();
    }
  }
  next = ahead;
}

template <int kChannels, std::size_t kPerGroup>
void resampleRun(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan, std::uint8_t* const* out,
                 Fetching& next) {
  using enum ByteSum;
  const ByteSum sum = plan.taps[plan.run.first].sum;
  if (sum == OneDigit) return resampleRun<kChannels, kPerGroup, OneDigit>(in, plan, out, next);
  if (sum == Parts) return resampleRun<kChannels, kPerGroup, Parts>(in, plan, out, next);
  if constexpr (kDigitsOfRuns == 3) resampleRun<kChannels, kPerGroup, ThreeDigits>(in, plan, out, next);
}

template <int kChannels>
void resampleRun(const SourceRows<std::uint8_t>& in, const ByteRowPlan& plan, std::uint8_t* const* out,
                 Fetching& next) {
  if (plan.run.perGroup == 1)
    resampleRun<kChannels, 1>(in, plan, out, next);
  else
    resampleRun<kChannels, 2>(in, plan, out, next);
}

}  // namespace
