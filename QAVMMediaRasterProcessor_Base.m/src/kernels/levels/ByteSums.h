// Weighted sums of bytes in whole numbers, where exactness is proved from the weights, and their rounding. Included
// inside the region, from the second level on.

namespace {

// The bits of a digit of a weight. Where the products of two bytes are summed in 16 bits on the way, digits of more
// than 7 bits would overflow.
constexpr int kDigitBits = QAV_KERNEL_LEVEL >= 3 ? 8 : 7;

// Adds to every lane of `sum` the products of its four bytes and the four signed digits of `digits`.
[[gnu::always_inline]] inline I32 addProducts(I32 sum, U8 bytes, std::int32_t digits) {
#if QAV_KERNEL_LEVEL >= 3
  return (I32)_mm512_dpbusd_epi32((__m512i)sum, (__m512i)bytes, _mm512_set1_epi32(digits));
#elif QAV_KERNEL_LEVEL == 2
  const __m512i pairs = _mm512_maddubs_epi16((__m512i)bytes, _mm512_set1_epi32(digits));
  return sum + (I32)_mm512_madd_epi16(pairs, _mm512_set1_epi16(1));
#else
  const __m256i pairs = _mm256_maddubs_epi16((__m256i)bytes, _mm256_set1_epi32(digits));
  return sum + (I32)_mm256_madd_epi16(pairs, _mm256_set1_epi16(1));
#endif
}

// Pairs of vectors side by side in each 128-bit lane, as in `packed`; all saturate.
[[gnu::always_inline]] inline U16 narrowUnsigned(I32 a, I32 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U16)_mm512_packus_epi32((__m512i)a, (__m512i)b);
#else
  return (U16)_mm256_packus_epi32((__m256i)a, (__m256i)b);
#endif
}

[[gnu::always_inline]] inline I16 narrowSigned(I32 a, I32 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I16)_mm512_packs_epi32((__m512i)a, (__m512i)b);
#else
  return (I16)_mm256_packs_epi32((__m256i)a, (__m256i)b);
#endif
}

[[gnu::always_inline]] inline U8 packedBytes(I16 a, I16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U8)_mm512_packus_epi16((__m512i)a, (__m512i)b);
#else
  return (U8)_mm256_packus_epi16((__m256i)a, (__m256i)b);
#endif
}

[[gnu::always_inline]] inline U8 packedSigns(I16 a, I16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U8)_mm512_packs_epi16((__m512i)a, (__m512i)b);
#else
  return (U8)_mm256_packs_epi16((__m256i)a, (__m256i)b);
#endif
}

// The results of four vectors of sums.
[[gnu::always_inline]] inline U8 packed(I32 a, I32 b, I32 c, I32 d) {
  return packedBytes(narrowSigned(a, b), narrowSigned(c, d));
}

// In the same order, of lanes that are all ones or all zeros.
[[gnu::always_inline]] inline std::uint64_t packedFlags(I32 a, I32 b, I32 c, I32 d) {
  return signBits(packedSigns(narrowSigned(a, b), narrowSigned(c, d)));
}

[[gnu::always_inline]] inline I32 magnitude(I32 v) {
#if QAV_KERNEL_LEVEL >= 2
  return (I32)_mm512_abs_epi32((__m512i)v);
#else
  return (I32)_mm256_abs_epi32((__m256i)v);
#endif
}

[[gnu::always_inline]] inline bool anyBelow(U32 v, U32 bound) {
#if QAV_KERNEL_LEVEL >= 2
  return _mm512_cmplt_epu32_mask((__m512i)v, (__m512i)bound) != 0;
#else
  return _mm256_movemask_ps((__m256)(v < bound)) != 0;
#endif
}

// The results of two vectors of sums, rounded half up and limited to 0..255, in the low bytes; not-a-number gives 0.
[[gnu::always_inline]] inline __m128i roundedBytes(F64 low, F64 high) {
  const F64 half = splat<F64>(0.5), none{}, most = splat<F64>(255.0);
#if QAV_KERNEL_LEVEL >= 2
  const auto limited = [&](F64 sum) {
    return _mm512_cvttpd_epi32(_mm512_min_pd(_mm512_max_pd((__m512d)(sum + half), (__m512d)none), (__m512d)most));
  };
  return _mm512_cvtepi32_epi8(_mm512_inserti64x4(_mm512_castsi256_si512(limited(low)), limited(high), 1));
#else
  const auto limited = [&](F64 sum) {
    return _mm256_cvttpd_epi32(_mm256_min_pd(_mm256_max_pd((__m256d)(sum + half), (__m256d)none), (__m256d)most));
  };
  const __m128i words = _mm_packs_epi32(limited(low), limited(high));
  return _mm_packus_epi16(words, words);
#endif
}

// Adds the products of a vector of integers and a weight: to `low` those of the lower half, to `high` of the upper.
[[gnu::always_inline]] inline void addExactly(F64& low, F64& high, I32 samples, F64 weight) {
#if QAV_KERNEL_LEVEL >= 2
  low += (F64)_mm512_cvtepi32_pd(_mm512_castsi512_si256((__m512i)samples)) * weight;
  high += (F64)_mm512_cvtepi32_pd(_mm512_extracti64x4_epi64((__m512i)samples, 1)) * weight;
#else
  low += (F64)_mm256_cvtepi32_pd(_mm256_castsi256_si128((__m256i)samples)) * weight;
  high += (F64)_mm256_cvtepi32_pd(_mm256_extracti128_si256((__m256i)samples, 1)) * weight;
#endif
}

// The running sum of a vector of results. (Named members: the compiler keeps arrays in memory.)
template <ByteSum kSum>
struct Sum {
  static constexpr bool kThree = kSum == ByteSum::ThreeDigits;
  I32 high{}, middle{}, low;

  [[gnu::always_inline]] explicit Sum(const ByteTaps& taps) : low(splat<I32>(taps.bias)) {}
  [[gnu::always_inline]] void add(U8 bytes, const std::int32_t* digits) {
    if constexpr (kThree) {
      high = addProducts(high, bytes, digits[0]);
      middle = addProducts(middle, bytes, digits[1]);
    }
    low = addProducts(low, bytes, digits[kThree ? 2 : 0]);
  }
  [[gnu::always_inline]] I32 total() const {
    return kThree ? (((high << kDigitBits) + middle) << kDigitBits) + low : low;
  }
};

template <>
struct Sum<ByteSum::Ratio> {
  I32 parts, excess;
  std::int32_t bound;

  [[gnu::always_inline]] explicit Sum(const ByteTaps& taps)
      : parts(splat<I32>(taps.bias)), excess(splat<I32>(taps.excessBias)), bound(taps.excessBound) {}
  [[gnu::always_inline]] void add(U8 bytes, const std::int32_t* digits) {
    parts = addProducts(parts, bytes, digits[0]);
    excess = addProducts(excess, bytes, digits[1]);
  }
  // An exact half that its excess pulls down is one less, which changes no other quotient.
  [[gnu::always_inline]] I32 dividend() const { return parts + (excess >> 31); }
  // Not negative where the excess does not decide.
  [[gnu::always_inline]] I32 doubt() const { return splat<I32>(bound) - magnitude(excess); }
};

// Rounded results of four sums, and the bytes for which they are too close to call.
struct Rounded {
  U8 bytes;
  std::uint64_t doubtful = 0;
};

template <ByteSum kSum>
[[gnu::always_inline]] inline Rounded roundedSums(const Sum<kSum>& s0, const Sum<kSum>& s1, const Sum<kSum>& s2,
                                                  const Sum<kSum>& s3, const ByteWeights& weights) {
  const int shift = weights.shift[static_cast<int>(kSum)];
  const I32 t0 = s0.total(), t1 = s1.total(), t2 = s2.total(), t3 = s3.total();
  Rounded rounded{packed(t0 >> shift, t1 >> shift, t2 >> shift, t3 >> shift)};
  if constexpr (kSum == ByteSum::ThreeDigits) {
    const int whole = 32 - shift;
    const U32 f0 = (U32)t0 << whole, f1 = (U32)t1 << whole, f2 = (U32)t2 << whole, f3 = (U32)t3 << whole;
    const U32 doubt = splat<U32>(weights.doubt);
    if (anyBelow(min(min(f0, f1), min(f2, f3)), doubt)) [[unlikely]]
      rounded.doubtful = packedFlags((I32)(f0 < doubt), (I32)(f1 < doubt), (I32)(f2 < doubt), (I32)(f3 < doubt));
  }
  return rounded;
}

// Dividends as 16 bits, which are enough: one beyond them belongs to a result beyond a byte.
struct Division {
  U16 dividend, quotient;

  [[gnu::always_inline]] Division(I32 a, I32 b, const ByteWeights& weights)
      : dividend(narrowUnsigned(a, b)),
        quotient(mulhi(dividend, splat<U16>(static_cast<std::uint16_t>(weights.reciprocal))) >>
                 weights.reciprocalShift) {}
};

[[gnu::always_inline]] inline Rounded roundedSums(const Sum<ByteSum::Parts>& s0, const Sum<ByteSum::Parts>& s1,
                                                  const Sum<ByteSum::Parts>& s2, const Sum<ByteSum::Parts>& s3,
                                                  const ByteWeights& weights) {
  const Division low(s0.low, s1.low, weights), high(s2.low, s3.low, weights);
  return {packedBytes((I16)low.quotient, (I16)high.quotient)};
}

[[gnu::always_inline]] inline Rounded roundedSums(const Sum<ByteSum::Ratio>& s0, const Sum<ByteSum::Ratio>& s1,
                                                  const Sum<ByteSum::Ratio>& s2, const Sum<ByteSum::Ratio>& s3,
                                                  const ByteWeights& weights) {
  const U16 divisor = splat<U16>(static_cast<std::uint16_t>(weights.divisor));
  const Division low(s0.dividend(), s1.dividend(), weights), high(s2.dividend(), s3.dividend(), weights);
  const I16 lowDoubt = narrowSigned(s0.doubt(), s1.doubt()), highDoubt = narrowSigned(s2.doubt(), s3.doubt());
  // An exact half that is pulled down leaves the remainder divisor - 1.
  const I16 none = splat<I16>(-1);
  const auto exactHalf = [&](const Division& division) {
    const U16 rest = division.dividend - division.quotient * divisor;
    return (I16)(rest == U16{}) | (I16)(rest == divisor - splat<U16>(1));
  };
  return {packedBytes((I16)low.quotient, (I16)high.quotient),
          signBits(packedSigns(exactHalf(low) & (I16)(lowDoubt > none), exactHalf(high) & (I16)(highDoubt > none)))};
}

// Four vectors of sums, which start as those of four positions do.
template <ByteSum kSum>
struct FourSums {
  Sum<kSum> s0, s1, s2, s3;

  [[gnu::always_inline]] explicit FourSums(const ByteTaps* taps) : s0(taps[0]), s1(taps[1]), s2(taps[2]), s3(taps[3]) {}
  [[gnu::always_inline]] Rounded rounded(const ByteWeights& weights) const {
    return roundedSums(s0, s1, s2, s3, weights);
  }
};

// The digits of four positions stand side by side.
template <ByteSum kSum>
inline constexpr std::size_t kBetweenGroups = 4 * digitsOf(kSum);

}  // namespace
