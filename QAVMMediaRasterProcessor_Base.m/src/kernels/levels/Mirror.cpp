#include "kernels/Mirror.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

// The byte order that reverses the pixels in `count` bytes and goes on as it is behind them.
template <std::size_t count, std::size_t channels>
struct ReversedOrder {
  constexpr ReversedOrder() {
    for (std::size_t i = 0; i < kVectorBytes; ++i)
      bytes[i] = static_cast<std::uint8_t>(i < count ? count - channels - i / channels * channels + i % channels : i);
  }
  alignas(64) std::uint8_t bytes[kVectorBytes] = {};
};

// The same within every 16 bytes.
template <std::size_t count, std::size_t channels>
struct ReversedInLanes {
  constexpr ReversedInLanes() {
    for (std::size_t i = 0; i < kVectorBytes; ++i) {
      const std::size_t b = i % 16;
      bytes[i] = static_cast<std::uint8_t>(b < count ? count - channels - b / channels * channels + b % channels : b);
    }
  }
  alignas(64) std::uint8_t bytes[kVectorBytes] = {};
};

// Reads and writes a block of whole pixels, as many as fit a vector, and reverses it.
template <std::size_t channels>
struct Block {
#if QAV_KERNEL_LEVEL >= 1
  static constexpr std::size_t bytes = kVectorBytes;
  static U8 read(const std::uint8_t* from) { return load<U8>(from); }
  static void write(std::uint8_t* to, U8 v) { store(to, v); }
  static U8 reversed(U8 v) {
#if QAV_KERNEL_LEVEL >= 3
    static constexpr ReversedOrder<bytes, channels> order;
    return (U8)_mm512_permutexvar_epi8(_mm512_load_si512(order.bytes), (__m512i)v);
#elif QAV_KERNEL_LEVEL == 2
    static constexpr ReversedInLanes<16, channels> order;
    const __m512i lanes = _mm512_shuffle_i64x2((__m512i)v, (__m512i)v, 0x1B);
    return (U8)_mm512_shuffle_epi8(lanes, _mm512_load_si512(order.bytes));
#else
    static constexpr ReversedInLanes<16, channels> order;
    const __m256i lanes = _mm256_permute2x128_si256((__m256i)v, (__m256i)v, 1);
    return (U8)_mm256_shuffle_epi8(lanes, (__m256i)load<U8>(order.bytes));
#endif
  }
#endif
};

#if QAV_KERNEL_LEVEL >= 2
template <>
struct Block<3> {
#if QAV_KERNEL_LEVEL >= 3
  static constexpr std::size_t bytes = 63;
#else
  static constexpr std::size_t bytes = 48;
#endif
  static constexpr __mmask64 mask = (std::uint64_t{1} << bytes) - 1;
  static U8 read(const std::uint8_t* from) { return (U8)_mm512_maskz_loadu_epi8(mask, from); }
  static void write(std::uint8_t* to, U8 v) { _mm512_mask_storeu_epi8(to, mask, (__m512i)v); }
  static U8 reversed(U8 v) {
#if QAV_KERNEL_LEVEL >= 3
    static constexpr ReversedOrder<bytes, 3> order;
    return (U8)_mm512_permutexvar_epi8(_mm512_load_si512(order.bytes), (__m512i)v);
#else
    // Four pixels a lane, last lane first; then the pixels within the lanes; then close up.
    static constexpr ReversedInLanes<12, 3> order;
    const __m512i spread = _mm512_setr_epi32(9, 10, 11, 11, 6, 7, 8, 8, 3, 4, 5, 5, 0, 1, 2, 2);
    const __m512i close = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15);
    const __m512i lanes = _mm512_permutexvar_epi32(spread, (__m512i)v);
    return (U8)_mm512_permutexvar_epi32(close, _mm512_shuffle_epi8(lanes, _mm512_load_si512(order.bytes)));
#endif
  }
};
#elif QAV_KERNEL_LEVEL == 1
template <>
struct Block<3> {
  static constexpr std::size_t bytes = 24;
  static __m256i mask() { return _mm256_setr_epi32(-1, -1, -1, -1, -1, -1, 0, 0); }
  static U8 read(const std::uint8_t* from) {
    return (U8)_mm256_maskload_epi32(reinterpret_cast<const int*>(from), mask());
  }
  static void write(std::uint8_t* to, U8 v) { _mm256_maskstore_epi32(reinterpret_cast<int*>(to), mask(), (__m256i)v); }
  static U8 reversed(U8 v) {
    static constexpr ReversedInLanes<12, 3> order;
    const __m256i lanes = _mm256_permutevar8x32_epi32((__m256i)v, _mm256_setr_epi32(3, 4, 5, 5, 0, 1, 2, 2));
    const __m256i turned = _mm256_shuffle_epi8(lanes, (__m256i)load<U8>(order.bytes));
    return (U8)_mm256_permutevar8x32_epi32(turned, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
  }
};
#endif

template <std::size_t channels>
void reversePixels(std::uint8_t* bytes, std::size_t pixels) {
  std::uint8_t* left = bytes;
  std::uint8_t* right = bytes + pixels * channels;
#if QAV_KERNEL_LEVEL >= 1
  // When less than two blocks remain they overlap, and both write the same bytes there. Each pair is read before the
  // pair outside it is written: the processor holds a read up when the write before it may touch the same bytes.
  using B = Block<channels>;
  const auto holdsBlock = [&] { return right - left >= static_cast<std::ptrdiff_t>(B::bytes); };
  U8 first{}, last{};
  if (holdsBlock()) {
    first = B::read(left);
    last = B::read(right - B::bytes);
  }
  while (holdsBlock()) {
    std::uint8_t *const to = left, *const from = right - B::bytes;
    const U8 newLast = B::reversed(first), newFirst = B::reversed(last);
    left += B::bytes;
    right -= B::bytes;
    if (holdsBlock()) {
      first = B::read(left);
      last = B::read(right - B::bytes);
    }
    B::write(to, newFirst);
    B::write(from, newLast);
  }
#endif
  for (; right - left >= static_cast<std::ptrdiff_t>(2 * channels); left += channels) {
    right -= channels;
    for (std::size_t k = 0; k < channels; ++k) {
      const std::uint8_t byte = left[k];
      left[k] = right[k];
      right[k] = byte;
    }
  }
}

void reverse(std::uint8_t* bytes, std::size_t pixels, int channels) {
  if (channels == 1) reversePixels<1>(bytes, pixels);
  if (channels == 2) reversePixels<2>(bytes, pixels);
  if (channels == 3) reversePixels<3>(bytes, pixels);
  if (channels == 4) reversePixels<4>(bytes, pixels);
}

void exchange(std::uint8_t* __restrict one, std::uint8_t* __restrict other, std::size_t count) {
  std::size_t i = 0;
  for (; i + kVectorBytes <= count; i += kVectorBytes) {
    const U8 v = load<U8>(one + i);
    store(one + i, load<U8>(other + i));
    store(other + i, v);
  }
  for (; i < count; ++i) {
    const std::uint8_t byte = one[i];
    one[i] = other[i];
    other[i] = byte;
  }
}

}  // namespace

extern const MirrorKernels mirror;
const MirrorKernels mirror = {&reverse, &exchange};

#include "RegionEnd.h"
