// Weighted sums of rows of bytes, column by column. Included inside the region, behind Vector.h and, from the second
// level on, ByteSums.h.

namespace {

constexpr std::size_t kDoubles = kLanes<F64>;

[[gnu::always_inline]] inline F64 doublesFromBytes(const std::uint8_t* from) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_cvtepi32_pd(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from))));
#elif QAV_KERNEL_LEVEL == 1
  std::int32_t four;
  std::memcpy(&four, from, sizeof four);
  return (F64)_mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(four)));
#else
  return F64{static_cast<double>(from[0]), static_cast<double>(from[1])};
#endif
}

// Rounds half up and limits to 0..255; not-a-number gives 0.
[[gnu::always_inline]] inline void storeRounded(std::uint8_t* to, F64 sum) {
  const F64 v = sum + splat<F64>(0.5);
#if QAV_KERNEL_LEVEL >= 2
  const __m512d limited = _mm512_min_pd(_mm512_max_pd((__m512d)v, _mm512_setzero_pd()), _mm512_set1_pd(255.0));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm256_cvtepi32_epi8(_mm512_cvttpd_epi32(limited)));
#elif QAV_KERNEL_LEVEL == 1
  const __m256d limited = _mm256_min_pd(_mm256_max_pd((__m256d)v, _mm256_setzero_pd()), _mm256_set1_pd(255.0));
  const __m128i ints = _mm256_cvttpd_epi32(limited);
  const std::int32_t four = _mm_cvtsi128_si32(_mm_shuffle_epi8(ints, _mm_set1_epi32(0x0C080400)));
  std::memcpy(to, &four, sizeof four);
#else
  for (std::size_t i = 0; i < kDoubles; ++i)
    to[i] = v[i] >= 255.0 ? 255 : v[i] > 0.0 ? static_cast<std::uint8_t>(v[i]) : 0;
#endif
}

// sampleAt(t) belongs to tap t.
template <class At>
[[gnu::always_inline]] inline std::uint8_t exactSample(const ByteTaps& taps, At sampleAt) {
  double sum = 0.0;
  for (std::int32_t t = 0; t < taps.count; ++t) sum += static_cast<double>(sampleAt(t)) * taps.weights[t];
  const double v = sum + 0.5;
  return v >= 255.0 ? 255 : v > 0.0 ? static_cast<std::uint8_t>(v) : 0;
}

// kCount columns from `at` on.
template <std::size_t kCount>
[[gnu::noinline]] void exactColumns(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                    std::uint8_t* out) {
  constexpr std::size_t kVectors = kCount / kDoubles;
  F64 sums[kVectors] = {};
  for (std::int32_t t = 0; t < taps.count; ++t) {
    const F64 weight = splat<F64>(taps.weights[t]);
    const std::uint8_t* const row = rows[t] + at;
#pragma GCC unroll 8
    for (std::size_t v = 0; v < kVectors; ++v) sums[v] += doublesFromBytes(row + v * kDoubles) * weight;
  }
#pragma GCC unroll 8
  for (std::size_t v = 0; v < kVectors; ++v) storeRounded(out + at + v * kDoubles, sums[v]);
}

#if QAV_KERNEL_LEVEL >= 1

[[gnu::always_inline]] inline void interleaveRows(const std::uint8_t* const* rows, std::size_t at, U8 (&out)[4]) {
#if QAV_KERNEL_LEVEL >= 2
  using V = __m512i;
  const auto low8 = [](V a, V b) { return _mm512_unpacklo_epi8(a, b); };
  const auto high8 = [](V a, V b) { return _mm512_unpackhi_epi8(a, b); };
  const auto low16 = [](V a, V b) { return _mm512_unpacklo_epi16(a, b); };
  const auto high16 = [](V a, V b) { return _mm512_unpackhi_epi16(a, b); };
#else
  using V = __m256i;
  const auto low8 = [](V a, V b) { return _mm256_unpacklo_epi8(a, b); };
  const auto high8 = [](V a, V b) { return _mm256_unpackhi_epi8(a, b); };
  const auto low16 = [](V a, V b) { return _mm256_unpacklo_epi16(a, b); };
  const auto high16 = [](V a, V b) { return _mm256_unpackhi_epi16(a, b); };
#endif
  const V a = (V)load<U8>(rows[0] + at), b = (V)load<U8>(rows[1] + at);
  const V c = (V)load<U8>(rows[2] + at), d = (V)load<U8>(rows[3] + at);
  const V abLow = low8(a, b), abHigh = high8(a, b), cdLow = low8(c, d), cdHigh = high8(c, d);
  out[0] = (U8)low16(abLow, cdLow);
  out[1] = (U8)high16(abLow, cdLow);
  out[2] = (U8)low16(abHigh, cdHigh);
  out[3] = (U8)high16(abHigh, cdHigh);
}

#if QAV_KERNEL_LEVEL >= 3
// Sixteen doubtful columns at a time: with ratios that are rich in exact halves most blocks have about as many.
[[gnu::noinline]] void decideColumns(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                     Rounded rounded, std::uint8_t* out) {
  __m512i bytes = (__m512i)rounded.bytes;
  for (std::uint64_t left = rounded.doubtful; left != 0;) {
    const std::uint64_t which = _pdep_u64(0xFFFF, left);
    left &= ~which;
    F64 low{}, high{};
    for (std::int32_t t = 0; t < taps.count; ++t) {
      const __m512i samples = _mm512_maskz_compress_epi8(which, (__m512i)load<U8>(rows[t] + at));
      addExactly(low, high, (I32)_mm512_cvtepu8_epi32(_mm512_castsi512_si128(samples)), splat<F64>(taps.weights[t]));
    }
    bytes = _mm512_mask_expand_epi8(bytes, which, _mm512_castsi128_si512(roundedBytes(low, high)));
  }
  store(out + at, (U8)bytes);
}
#else
// Sixteen columns at a time.
[[gnu::noinline]] void decideColumns(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                     const Rounded& rounded, std::uint8_t* out) {
  for (std::uint64_t doubtful = rounded.doubtful; doubtful != 0; doubtful >>= 16, at += 16)
    if (doubtful & 0xFFFF) exactColumns<16>(rows, at, taps, out);
}
#endif

// The sums of as many columns as a vector has bytes.
template <ByteSum kSum>
struct ColumnSums {
  Sum<kSum> s0, s1, s2, s3;

  [[gnu::always_inline]] explicit ColumnSums(const ByteTaps& taps) : s0(taps), s1(taps), s2(taps), s3(taps) {}
  [[gnu::always_inline]] void add(const std::uint8_t* const* rows, std::size_t at, const std::int32_t* digits) {
    U8 bytes[4];
    interleaveRows(rows, at, bytes);
    s0.add(bytes[0], digits);
    s1.add(bytes[1], digits);
    s2.add(bytes[2], digits);
    s3.add(bytes[3], digits);
  }
  [[gnu::always_inline]] void finish(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                     const ByteWeights& weights, std::uint8_t* out) const {
    const Rounded rounded = roundedSums(s0, s1, s2, s3, weights);
    store(out + at, rounded.bytes);
    if (rounded.doubtful) [[unlikely]]
      decideColumns(rows, at, taps, rounded, out);
  }
};

// A vector of columns, or two.
template <ByteSum kSum, bool kTwo>
[[gnu::always_inline]] inline void integerColumns(const std::uint8_t* const* rows, std::size_t at, const ByteTaps& taps,
                                                  const ByteWeights& weights, std::uint8_t* out) {
  ColumnSums<kSum> first(taps), second(taps);
  for (std::int32_t g = 0; g < taps.groups; ++g) {
    const std::int32_t* const digits = taps.digits + g * digitsOf(kSum);
    first.add(rows + 4 * g, at, digits);
    if constexpr (kTwo) second.add(rows + 4 * g, at + kVectorBytes, digits);
  }
  first.finish(rows, at, taps, weights, out);
  if constexpr (kTwo) second.finish(rows, at + kVectorBytes, taps, weights, out);
}

#endif

// Calls block for vectors of columns from `at` on; those from `first` on are done.
template <class Block>
[[gnu::always_inline]] inline void overColumns(const std::uint8_t* const* rows, std::size_t first, std::size_t at,
                                               std::size_t end, const ByteTaps& taps, std::uint8_t* out, Block block) {
  for (; at + kVectorBytes <= end; at += kVectorBytes) block(at);
  // The last columns lie in a block that begins among those already done.
  if (at < end && end - first >= kVectorBytes)
    block(end - kVectorBytes);
  else
    for (; at < end; ++at) out[at] = exactSample(taps, [&](std::int32_t t) { return rows[t][at]; });
}

#if QAV_KERNEL_LEVEL >= 1
template <ByteSum kSum>
void columnsOf(const std::uint8_t* const* rows, std::size_t first, std::size_t end, const ByteTaps& taps,
               const ByteWeights& weights, std::uint8_t* out) {
  std::size_t at = first;
  // Sums of one digit leave registers for two vectors.
  if constexpr (digitsOf(kSum) == 1)
    for (; at + 2 * kVectorBytes <= end; at += 2 * kVectorBytes)
      integerColumns<kSum, true>(rows, at, taps, weights, out);
  overColumns(rows, first, at, end, taps, out,
              [&](std::size_t block) { integerColumns<kSum, false>(rows, block, taps, weights, out); });
}
#endif

void columns(const std::uint8_t* const* rows, std::size_t first, std::size_t end, const ByteTaps& taps,
             [[maybe_unused]] const ByteWeights& weights, std::uint8_t* out) {
#if QAV_KERNEL_LEVEL >= 1
  using enum ByteSum;
  if (taps.sum == OneDigit) return columnsOf<OneDigit>(rows, first, end, taps, weights, out);
  if (taps.sum == Parts) return columnsOf<Parts>(rows, first, end, taps, weights, out);
  if (taps.sum == Ratio) return columnsOf<Ratio>(rows, first, end, taps, weights, out);
  if (taps.sum == ThreeDigits) return columnsOf<ThreeDigits>(rows, first, end, taps, weights, out);
#endif
  overColumns(rows, first, first, end, taps, out,
              [&](std::size_t at) { exactColumns<kVectorBytes>(rows, at, taps, out); });
}

}  // namespace
