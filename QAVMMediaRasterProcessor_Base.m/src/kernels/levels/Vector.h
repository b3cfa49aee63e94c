// Vectors of the level's full width, for kernels that are the same at every level. Included inside the region, after
// RegionBegin.h. Element-wise + - * & | ^ << >> and comparisons are the compiler's own vector operators.

// One set for each translation unit: everything is internal to it.

namespace {

#if QAV_KERNEL_LEVEL >= 2
inline constexpr std::size_t kVectorBytes = 64;
#elif QAV_KERNEL_LEVEL == 1
inline constexpr std::size_t kVectorBytes = 32;
#else
inline constexpr std::size_t kVectorBytes = 16;
#endif

using U8 = std::uint8_t __attribute__((vector_size(kVectorBytes)));
using I8 = std::int8_t __attribute__((vector_size(kVectorBytes)));
using U16 = std::uint16_t __attribute__((vector_size(kVectorBytes)));
using I16 = std::int16_t __attribute__((vector_size(kVectorBytes)));
using U32 = std::uint32_t __attribute__((vector_size(kVectorBytes)));
using I32 = std::int32_t __attribute__((vector_size(kVectorBytes)));
using U64 = std::uint64_t __attribute__((vector_size(kVectorBytes)));
using I64 = std::int64_t __attribute__((vector_size(kVectorBytes)));
using F32 = float __attribute__((vector_size(kVectorBytes)));
using F64 = double __attribute__((vector_size(kVectorBytes)));

template <class V>
inline constexpr std::size_t kLanes = sizeof(V) / sizeof(V{}[0]);

template <class V>
[[gnu::always_inline]] inline V load(const void* from) {
  V v;
  std::memcpy(&v, from, sizeof v);
  return v;
}

template <class V>
[[gnu::always_inline]] inline void store(void* to, V v) {
  std::memcpy(to, &v, sizeof v);
}

// Asks for the memory a page ahead of a pass. The processor's own prefetcher stops where a page ends, and rows of
// working memory between the reads distract it; the page ahead may lie behind the image, which does no harm.
[[gnu::always_inline]] inline void prefetchPageAhead(const std::uint8_t* at) {
  constexpr std::intptr_t kPage = 4096;
  __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::intptr_t>(at) + kPage));
}

template <class V>
using Lane = std::remove_cvref_t<decltype(V{}[0])>;

// Subtracting zero keeps every value, negative zero too.
template <class V>
[[gnu::always_inline]] inline V splat(Lane<V> value) {
  return value - V{};
}

[[gnu::always_inline]] inline U8 min(U8 a, U8 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U8)_mm512_min_epu8((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U8)_mm256_min_epu8((__m256i)a, (__m256i)b);
#else
  U8 r{};
  for (std::size_t i = 0; i < kLanes<U8>; ++i) r[i] = a[i] < b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline U8 max(U8 a, U8 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U8)_mm512_max_epu8((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U8)_mm256_max_epu8((__m256i)a, (__m256i)b);
#else
  U8 r{};
  for (std::size_t i = 0; i < kLanes<U8>; ++i) r[i] = a[i] > b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline I8 min(I8 a, I8 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I8)_mm512_min_epi8((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I8)_mm256_min_epi8((__m256i)a, (__m256i)b);
#else
  I8 r{};
  for (std::size_t i = 0; i < kLanes<I8>; ++i) r[i] = a[i] < b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline I8 max(I8 a, I8 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I8)_mm512_max_epi8((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I8)_mm256_max_epi8((__m256i)a, (__m256i)b);
#else
  I8 r{};
  for (std::size_t i = 0; i < kLanes<I8>; ++i) r[i] = a[i] > b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline U16 min(U16 a, U16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U16)_mm512_min_epu16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U16)_mm256_min_epu16((__m256i)a, (__m256i)b);
#else
  U16 r{};
  for (std::size_t i = 0; i < kLanes<U16>; ++i) r[i] = a[i] < b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline U16 max(U16 a, U16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U16)_mm512_max_epu16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U16)_mm256_max_epu16((__m256i)a, (__m256i)b);
#else
  U16 r{};
  for (std::size_t i = 0; i < kLanes<U16>; ++i) r[i] = a[i] > b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline I16 min(I16 a, I16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I16)_mm512_min_epi16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I16)_mm256_min_epi16((__m256i)a, (__m256i)b);
#else
  I16 r{};
  for (std::size_t i = 0; i < kLanes<I16>; ++i) r[i] = a[i] < b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline I16 max(I16 a, I16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I16)_mm512_max_epi16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I16)_mm256_max_epi16((__m256i)a, (__m256i)b);
#else
  I16 r{};
  for (std::size_t i = 0; i < kLanes<I16>; ++i) r[i] = a[i] > b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline U32 min(U32 a, U32 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U32)_mm512_min_epu32((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U32)_mm256_min_epu32((__m256i)a, (__m256i)b);
#else
  U32 r{};
  for (std::size_t i = 0; i < kLanes<U32>; ++i) r[i] = a[i] < b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline U32 max(U32 a, U32 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U32)_mm512_max_epu32((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U32)_mm256_max_epu32((__m256i)a, (__m256i)b);
#else
  U32 r{};
  for (std::size_t i = 0; i < kLanes<U32>; ++i) r[i] = a[i] > b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline I32 min(I32 a, I32 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I32)_mm512_min_epi32((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I32)_mm256_min_epi32((__m256i)a, (__m256i)b);
#else
  I32 r{};
  for (std::size_t i = 0; i < kLanes<I32>; ++i) r[i] = a[i] < b[i] ? a[i] : b[i];
  return r;
#endif
}

[[gnu::always_inline]] inline I32 max(I32 a, I32 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I32)_mm512_max_epi32((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I32)_mm256_max_epi32((__m256i)a, (__m256i)b);
#else
  I32 r{};
  for (std::size_t i = 0; i < kLanes<I32>; ++i) r[i] = a[i] > b[i] ? a[i] : b[i];
  return r;
#endif
}

// Gives b where either is not-a-number.
[[gnu::always_inline]] inline F32 min(F32 a, F32 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (F32)_mm512_min_ps((__m512)a, (__m512)b);
#elif QAV_KERNEL_LEVEL == 1
  return (F32)_mm256_min_ps((__m256)a, (__m256)b);
#else
  F32 r{};
  for (std::size_t i = 0; i < kLanes<F32>; ++i) r[i] = a[i] < b[i] ? a[i] : b[i];
  return r;
#endif
}

// Gives b where either is not-a-number.
[[gnu::always_inline]] inline F32 max(F32 a, F32 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (F32)_mm512_max_ps((__m512)a, (__m512)b);
#elif QAV_KERNEL_LEVEL == 1
  return (F32)_mm256_max_ps((__m256)a, (__m256)b);
#else
  F32 r{};
  for (std::size_t i = 0; i < kLanes<F32>; ++i) r[i] = a[i] > b[i] ? a[i] : b[i];
  return r;
#endif
}

// Saturating.
[[gnu::always_inline]] inline U8 adds(U8 a, U8 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U8)_mm512_adds_epu8((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U8)_mm256_adds_epu8((__m256i)a, (__m256i)b);
#else
  U8 r{};
  for (std::size_t i = 0; i < kLanes<U8>; ++i) {
    const int v = a[i] + b[i];
    r[i] = static_cast<Lane<U8> >(v < 0 ? 0 : v > 255 ? 255 : v);
  }
  return r;
#endif
}

// Saturating.
[[gnu::always_inline]] inline U8 subs(U8 a, U8 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U8)_mm512_subs_epu8((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U8)_mm256_subs_epu8((__m256i)a, (__m256i)b);
#else
  U8 r{};
  for (std::size_t i = 0; i < kLanes<U8>; ++i) {
    const int v = a[i] - b[i];
    r[i] = static_cast<Lane<U8> >(v < 0 ? 0 : v > 255 ? 255 : v);
  }
  return r;
#endif
}

// Saturating.
[[gnu::always_inline]] inline U16 adds(U16 a, U16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U16)_mm512_adds_epu16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U16)_mm256_adds_epu16((__m256i)a, (__m256i)b);
#else
  U16 r{};
  for (std::size_t i = 0; i < kLanes<U16>; ++i) {
    const int v = a[i] + b[i];
    r[i] = static_cast<Lane<U16> >(v < 0 ? 0 : v > 65535 ? 65535 : v);
  }
  return r;
#endif
}

// Saturating.
[[gnu::always_inline]] inline U16 subs(U16 a, U16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U16)_mm512_subs_epu16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U16)_mm256_subs_epu16((__m256i)a, (__m256i)b);
#else
  U16 r{};
  for (std::size_t i = 0; i < kLanes<U16>; ++i) {
    const int v = a[i] - b[i];
    r[i] = static_cast<Lane<U16> >(v < 0 ? 0 : v > 65535 ? 65535 : v);
  }
  return r;
#endif
}

// Saturating.
[[gnu::always_inline]] inline I16 adds(I16 a, I16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I16)_mm512_adds_epi16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I16)_mm256_adds_epi16((__m256i)a, (__m256i)b);
#else
  I16 r{};
  for (std::size_t i = 0; i < kLanes<I16>; ++i) {
    const int v = a[i] + b[i];
    r[i] = static_cast<Lane<I16> >(v < -32768 ? -32768 : v > 32767 ? 32767 : v);
  }
  return r;
#endif
}

// Saturating.
[[gnu::always_inline]] inline I16 subs(I16 a, I16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I16)_mm512_subs_epi16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I16)_mm256_subs_epi16((__m256i)a, (__m256i)b);
#else
  I16 r{};
  for (std::size_t i = 0; i < kLanes<I16>; ++i) {
    const int v = a[i] - b[i];
    r[i] = static_cast<Lane<I16> >(v < -32768 ? -32768 : v > 32767 ? 32767 : v);
  }
  return r;
#endif
}

// High halves of the products.
[[gnu::always_inline]] inline U16 mulhi(U16 a, U16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U16)_mm512_mulhi_epu16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U16)_mm256_mulhi_epu16((__m256i)a, (__m256i)b);
#else
  U16 r{};
  for (std::size_t i = 0; i < kLanes<U16>; ++i)
    r[i] = static_cast<std::uint16_t>((static_cast<std::uint32_t>(a[i]) * b[i]) >> 16);
  return r;
#endif
}

[[gnu::always_inline]] inline I16 mulhi(I16 a, I16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I16)_mm512_mulhi_epi16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I16)_mm256_mulhi_epi16((__m256i)a, (__m256i)b);
#else
  I16 r{};
  for (std::size_t i = 0; i < kLanes<I16>; ++i)
    r[i] = static_cast<std::int16_t>((static_cast<std::int32_t>(a[i]) * b[i]) >> 16);
  return r;
#endif
}

// Halves round up.
[[gnu::always_inline]] inline U8 average(U8 a, U8 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (U8)_mm512_avg_epu8((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (U8)_mm256_avg_epu8((__m256i)a, (__m256i)b);
#else
  U8 r{};
  for (std::size_t i = 0; i < kLanes<U8>; ++i) r[i] = static_cast<std::uint8_t>((a[i] + b[i] + 1) >> 1);
  return r;
#endif
}

// Sums of the products of neighbouring lanes.
[[gnu::always_inline]] inline I32 multiplyAddPairs(I16 a, I16 b) {
#if QAV_KERNEL_LEVEL >= 2
  return (I32)_mm512_madd_epi16((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return (I32)_mm256_madd_epi16((__m256i)a, (__m256i)b);
#else
  I32 r{};
  for (std::size_t i = 0; i < kLanes<I32>; ++i) r[i] = a[2 * i] * b[2 * i] + a[2 * i + 1] * b[2 * i + 1];
  return r;
#endif
}

// Both clamped to 0..255, low lanes first.
[[gnu::always_inline]] inline U8 narrow(I16 low, I16 high) {
#if QAV_KERNEL_LEVEL >= 2
  const __m512i order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
  return (U8)_mm512_permutexvar_epi64(order, _mm512_packus_epi16((__m512i)low, (__m512i)high));
#elif QAV_KERNEL_LEVEL == 1
  return (U8)_mm256_permute4x64_epi64(_mm256_packus_epi16((__m256i)low, (__m256i)high), 0xD8);
#else
  U8 r{};
  for (std::size_t i = 0; i < kLanes<I16>; ++i) {
    r[i] = static_cast<std::uint8_t>(low[i] < 0 ? 0 : low[i] > 255 ? 255 : low[i]);
    r[i + kLanes<I16>] = static_cast<std::uint8_t>(high[i] < 0 ? 0 : high[i] > 255 ? 255 : high[i]);
  }
  return r;
#endif
}

// Reads half a vector of bytes.
[[gnu::always_inline]] inline U16 loadWidened(const std::uint8_t* from) {
#if QAV_KERNEL_LEVEL >= 2
  return (U16)_mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
#elif QAV_KERNEL_LEVEL == 1
  return (U16)_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
#else
  U16 r{};
  for (std::size_t i = 0; i < kLanes<U16>; ++i) r[i] = from[i];
  return r;
#endif
}

// Reads a quarter of a vector of bytes.
[[gnu::always_inline]] inline I32 loadWidened32(const std::uint8_t* from) {
#if QAV_KERNEL_LEVEL >= 2
  return (I32)_mm512_cvtepu8_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
#elif QAV_KERNEL_LEVEL == 1
  return (I32)_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)));
#else
  I32 r{};
  for (std::size_t i = 0; i < kLanes<I32>; ++i) r[i] = from[i];
  return r;
#endif
}

// Reads an eighth of a vector of bytes.
[[gnu::always_inline]] inline F64 loadDoubles(const std::uint8_t* from) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_cvtepi32_pd(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from))));
#elif QAV_KERNEL_LEVEL == 1
  std::int32_t bytes;
  std::memcpy(&bytes, from, sizeof bytes);
  return (F64)_mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(bytes)));
#else
  F64 r{};
  for (std::size_t i = 0; i < kLanes<F64>; ++i) r[i] = from[i];
  return r;
#endif
}

// Writes half a vector of bytes, clamped to 0..255.
[[gnu::always_inline]] inline void storeNarrowed(std::uint8_t* to, I16 v) {
#if QAV_KERNEL_LEVEL >= 2
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to),
                      _mm512_cvtusepi16_epi8(_mm512_max_epi16((__m512i)v, _mm512_setzero_si512())));
#elif QAV_KERNEL_LEVEL == 1
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to),
                   _mm_packus_epi16(_mm256_castsi256_si128((__m256i)v), _mm256_extracti128_si256((__m256i)v, 1)));
#else
  for (std::size_t i = 0; i < kLanes<I16>; ++i)
    to[i] = static_cast<std::uint8_t>(v[i] < 0 ? 0 : v[i] > 255 ? 255 : v[i]);
#endif
}

// Writes a quarter of a vector of bytes, clamped to 0..255.
[[gnu::always_inline]] inline void storeNarrowed(std::uint8_t* to, I32 v) {
#if QAV_KERNEL_LEVEL >= 2
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to),
                   _mm512_cvtusepi32_epi8(_mm512_max_epi32((__m512i)v, _mm512_setzero_si512())));
#elif QAV_KERNEL_LEVEL == 1
  const __m128i words = _mm_packs_epi32(_mm256_castsi256_si128((__m256i)v), _mm256_extracti128_si256((__m256i)v, 1));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(words, words));
#else
  for (std::size_t i = 0; i < kLanes<I32>; ++i)
    to[i] = static_cast<std::uint8_t>(v[i] < 0 ? 0 : v[i] > 255 ? 255 : v[i]);
#endif
}

[[gnu::always_inline]] inline F32 toFloat(I32 v) {
#if QAV_KERNEL_LEVEL >= 2
  return (F32)_mm512_cvtepi32_ps((__m512i)v);
#elif QAV_KERNEL_LEVEL == 1
  return (F32)_mm256_cvtepi32_ps((__m256i)v);
#else
  F32 r{};
  for (std::size_t i = 0; i < kLanes<F32>; ++i) r[i] = static_cast<float>(v[i]);
  return r;
#endif
}

// Toward zero. Every lane must lie within the range of int.
[[gnu::always_inline]] inline I32 truncate(F32 v) {
#if QAV_KERNEL_LEVEL >= 2
  return (I32)_mm512_cvttps_epi32((__m512)v);
#elif QAV_KERNEL_LEVEL == 1
  return (I32)_mm256_cvttps_epi32((__m256)v);
#else
  I32 r{};
  for (std::size_t i = 0; i < kLanes<I32>; ++i) r[i] = static_cast<std::int32_t>(v[i]);
  return r;
#endif
}

[[gnu::always_inline]] inline F32 squareRoot(F32 v) {
#if QAV_KERNEL_LEVEL >= 2
  return (F32)_mm512_sqrt_ps((__m512)v);
#elif QAV_KERNEL_LEVEL == 1
  return (F32)_mm256_sqrt_ps((__m256)v);
#else
  F32 r{};
  for (std::size_t i = 0; i < kLanes<F32>; ++i) r[i] = __builtin_sqrtf(v[i]);
  return r;
#endif
}

[[gnu::always_inline]] inline F64 squareRoot(F64 v) {
#if QAV_KERNEL_LEVEL >= 2
  return (F64)_mm512_sqrt_pd((__m512d)v);
#elif QAV_KERNEL_LEVEL == 1
  return (F64)_mm256_sqrt_pd((__m256d)v);
#else
  F64 r{};
  for (std::size_t i = 0; i < kLanes<F64>; ++i) r[i] = __builtin_sqrt(v[i]);
  return r;
#endif
}

// Bit i is the sign bit of byte i.
[[gnu::always_inline]] inline std::uint64_t signBits(U8 v) {
#if QAV_KERNEL_LEVEL >= 2
  return _mm512_movepi8_mask((__m512i)v);
#elif QAV_KERNEL_LEVEL == 1
  return static_cast<std::uint32_t>(_mm256_movemask_epi8((__m256i)v));
#else
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < kLanes<U8>; ++i) bits |= static_cast<std::uint64_t>(v[i] >> 7) << i;
  return bits;
#endif
}

// Bit i is set where byte i is equal in both.
[[gnu::always_inline]] inline std::uint64_t equalBits(U8 a, U8 b) {
#if QAV_KERNEL_LEVEL >= 2
  return _mm512_cmpeq_epi8_mask((__m512i)a, (__m512i)b);
#elif QAV_KERNEL_LEVEL == 1
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8((__m256i)a, (__m256i)b)));
#else
  return signBits((U8)(a == b));
#endif
}

}  // namespace
