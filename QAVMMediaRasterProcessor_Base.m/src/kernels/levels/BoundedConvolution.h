// Bytes from whole sums that only bound the quotient, and the quotient itself where the bounds lie on both sides of a
// whole number. Included inside the region, in the middle of Convolution.cpp.

namespace {

#if QAV_KERNEL_LEVEL >= 3
template <>
inline constexpr int kBoundedFrom<DigitQuads> = 3;
#else
template <>
inline constexpr int kBoundedFrom<Pairs> = 5;
#endif

// The source rows that a result needs and their weights.
struct WeighedRows {
  const std::uint8_t* const* rows;
  std::ptrdiff_t count;
  const float* weights;
};

inline WeighedRows weighedRows(const ConvolutionRows& c, int result) {
  const std::ptrdiff_t top = c.firstWeightRow - result, first = top < 0 ? -top : 0;
  return {c.rows + first, least(c.rowCount, c.weightRows - top) - first,
          c.bound->weights + (top + first) * c.bound->taps};
}

#if QAV_KERNEL_LEVEL >= 3
[[gnu::always_inline]] inline F32 samplesAsFloats(const std::uint8_t* at) { return toFloat(loadWidened32(at)); }

// Bit k is set where the samples under the kernel are equal for sample i + k, among those of `asked`.
inline std::uint64_t flatSamples(const ConvolutionRows& c, const WeighedRows& w, std::size_t i, std::uint64_t asked) {
  const U8 first = load<U8>(w.rows[0] + i);
  U8 difference{};
  for (std::ptrdiff_t r = 0; r < w.count && asked != 0; ++r) {
    const std::uint8_t* const row = w.rows[r] + i;
    for (std::ptrdiff_t t = 0; t < c.bound->taps; ++t) difference |= load<U8>(row + 4 * t) ^ first;
    asked &= equalBits(difference, U8{});
  }
  return asked;
}
#else
[[gnu::always_inline]] inline F32 samplesAsFloats(const std::uint8_t* at) {
  return toFloat(load<I32>(at) & splat<I32>(0xFFFF));
}

[[gnu::always_inline]] inline std::uint64_t zeroLanes(U32 v) {
#if QAV_KERNEL_LEVEL >= 2
  return _mm512_testn_epi32_mask((__m512i)v, (__m512i)v);
#else
  return static_cast<std::uint32_t>(_mm256_movemask_ps((__m256)(v == U32{})));
#endif
}

// Lanes hold two samples: the last ones of a row are compared with the one behind them too, which does no harm.
inline std::uint64_t flatSamples(const ConvolutionRows& c, const WeighedRows& w, std::size_t i, std::uint64_t asked) {
  constexpr std::size_t n = kLanes<U32>;
  std::uint64_t flat = 0;
  for (std::size_t k = 0; k < kBlock * n; k += n) {
    std::uint64_t here = asked >> k & ((std::uint64_t{1} << n) - 1);
    const U32 first = load<U32>(w.rows[0] + 4 * (i + k));
    U32 difference = first ^ (first >> 16 | first << 16);
    for (std::ptrdiff_t r = 0; r < w.count && here != 0; ++r) {
      const std::uint8_t* const row = w.rows[r] + 4 * (i + k);
      for (std::ptrdiff_t t = 0; t < c.bound->taps; t += 2) difference |= load<U32>(row + 16 * t) ^ first;
      here &= zeroLanes(difference);
    }
    flat |= here << k;
  }
  return flat;
}
#endif

// For `size` rows and taps, or for any where it is 0.
template <class A, int size>
[[gnu::always_inline]] inline F32 quotientsAt(const ConvolutionRows& c, const WeighedRows& w, std::size_t i) {
  F32 sum{};
  const float* weight = w.weights;
  const std::ptrdiff_t rows = size > 0 ? size : w.count, taps = size > 0 ? size : c.bound->taps;
#pragma GCC unroll 3
  for (std::ptrdiff_t r = 0; r < rows; ++r) {
    const std::uint8_t* at = w.rows[r] + i * A::kSampleBytes;
#pragma GCC unroll 3
    for (std::ptrdiff_t t = 0; t < taps; ++t, at += 4 * A::kSampleBytes)
      sum = sum + splat<F32>(*weight++) * samplesAsFloats(at);
  }
  return sum / splat<F32>(c.quotient.divisor);
}

// Results whose bytes are in doubt: those of the samples at + k for every bit k of `lanes`.
struct Doubt {
  std::size_t at;
  std::uint64_t lanes;
  int result;
};

// Replaces bytes that are in doubt, in whole vectors of samples but for the end of a row.
template <class A>
void resolve(const ConvolutionRows& c, const Doubt& doubt) {
  constexpr std::size_t n = kLanes<F32>;
  const WeighedRows w = weighedRows(c, doubt.result);
  std::uint8_t* const out = c.out[doubt.result];
  std::uint64_t left = doubt.lanes;
  const std::size_t firstVector = static_cast<std::size_t>(__builtin_ctzll(left)) / n * n;
  const bool severalVectors = left >> firstVector >> n != 0;
  // To compute a vector takes no longer than to see whether its samples are flat.
  if (severalVectors && w.count == c.weightRows) {
    std::uint64_t flat = flatSamples(c, w, doubt.at, left);
    left &= ~flat;
    *c.bound->recomputed += n;
    for (; flat != 0; flat &= flat - 1) {
      const std::size_t i = doubt.at + static_cast<std::size_t>(__builtin_ctzll(flat));
      out[i] = c.bound->flat[w.rows[0][i * A::kSampleBytes]];
    }
  }
  const bool small = w.count == 3 && c.bound->taps == 3;
  while (left != 0) {
    const std::size_t k = static_cast<std::size_t>(__builtin_ctzll(left)) / n * n, i = doubt.at + k;
    std::uint8_t bytes[n];
    const bool whole = c.count - i >= n;
    storeVector(whole ? out + i : bytes, small ? quotientsAt<A, 3>(c, w, i) : quotientsAt<A, 0>(c, w, i));
    if (!whole) std::memcpy(out + i, bytes, c.count - i);
    left &= ~(((std::uint64_t{1} << n) - 1) << k);
    *c.bound->recomputed += n;
  }
}

// Doubts are put off until a row is done or many have come together, so that the sums stay in registers and no branch
// depends on the samples.
template <class A>
class Doubts<A, true> {
 public:
  explicit Doubts(const ConvolutionRows& c) : c_(c) {}
  [[gnu::always_inline]] void note(std::size_t at, int result, std::uint64_t lanes) {
    noted_[count_] = {at, lanes, result};
    count_ += lanes != 0;
  }
  [[gnu::always_inline]] void makeRoom() {
    if (count_ >= kRoom) resolveAll();
  }
  [[gnu::noinline]] void resolveAll() {
    for (std::size_t d = 0; d < count_; ++d) resolve<A>(c_, noted_[d]);
    count_ = 0;
  }

 private:
  static constexpr std::size_t kRoom = 64;
  const ConvolutionRows& c_;
  std::size_t count_ = 0;
  Doubt noted_[kRoom + ConvolutionRows::kMostResults];
};

[[gnu::always_inline]] inline Block<I32> plus(const Block<I32>& a, I32 b) {
  return {a.v0 + b, a.v1 + b, a.v2 + b, a.v3 + b};
}

template <class A>
[[gnu::always_inline]] inline U8 shifted(const Block<I32>& sums, int shift) {
  return narrowed<A>(sums.v0 >> shift, sums.v1 >> shift, sums.v2 >> shift, sums.v3 >> shift);
}

[[gnu::always_inline]] inline std::uint64_t lowestBits(std::size_t count) {
  return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

// Adds `width` where everything is 255, as alpha often is, so that there is no doubt about it.
[[gnu::always_inline]] inline I32 raised(I32 sums, const ConvolutionBound& bound) {
  return sums + ((I32)(sums == splat<I32>(bound.full)) & splat<I32>(bound.width));
}

// The lanes whose bytes are in doubt.
template <class A>
[[gnu::always_inline]] inline std::uint64_t storeBounded(Block<I32> sums, const ConvolutionBound& bound,
                                                         std::size_t room, std::uint8_t* out) {
  const Block<I32> low = {raised(sums.v0, bound), raised(sums.v1, bound), raised(sums.v2, bound),
                          raised(sums.v3, bound)};
  const U8 bytes = shifted<A>(low, bound.shift);
  store(out, bytes);
  const U8 most = min(shifted<A>(plus(low, splat<I32>(bound.width)), bound.shift), splat<U8>(bound.most));
  return ~equalBits(bytes, most) & lowestBits(room < kVectorBytes ? room : kVectorBytes);
}

}  // namespace
