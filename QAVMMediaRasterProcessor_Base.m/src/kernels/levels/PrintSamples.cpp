#include "kernels/PrintSamples.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

constexpr std::uint8_t kLeastPrintedAlpha = 127;

void whitenGrey(const std::uint8_t* from, std::size_t pixels, std::uint8_t* to) {
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 1
  const auto whitened = [](U16 pixel) {
    const U16 white = (U16)((pixel >> 8) < splat<U16>(kLeastPrintedAlpha));
    return (I16)((pixel | white) & splat<U16>(255));
  };
  for (; i + kVectorBytes <= pixels; i += kVectorBytes) {
    const I16 low = whitened(load<U16>(from + 2 * i));
    const I16 high = whitened(load<U16>(from + 2 * i + kVectorBytes));
    store(to + i, narrow(low, high));
  }
#endif
  for (; i < pixels; ++i) to[i] = from[2 * i + 1] < kLeastPrintedAlpha ? 255 : from[2 * i];
}

void whitenColour(const std::uint8_t* from, std::size_t pixels, std::uint8_t* to) {
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 1
  // Whole vectors are stored; the bytes behind the colours are overwritten by the next ones.
  constexpr std::size_t step = kVectorBytes / 4;
  for (; i + kVectorBytes / 3 + 1 <= pixels; i += step) {
    const U32 pixel = load<U32>(from + 4 * i);
    const U32 whitened = pixel | (U32)((pixel >> 24) < splat<U32>(kLeastPrintedAlpha));
    const __m128i drop = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
#if QAV_KERNEL_LEVEL >= 2
    const __m512i order = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15);
    const __m512i colours = _mm512_shuffle_epi8((__m512i)whitened, _mm512_broadcast_i32x4(drop));
    store(to + 3 * i, (U8)_mm512_permutexvar_epi32(order, colours));
#else
    const __m256i colours = _mm256_shuffle_epi8((__m256i)whitened, _mm256_broadcastsi128_si256(drop));
    store(to + 3 * i, (U8)_mm256_permutevar8x32_epi32(colours, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7)));
#endif
  }
#endif
  for (; i < pixels; ++i) {
    const bool white = from[4 * i + 3] < kLeastPrintedAlpha;
    for (std::size_t k = 0; k < 3; ++k) to[3 * i + k] = white ? 255 : from[4 * i + k];
  }
}

// Bit i is set where the alpha of pixel i of 64 is 0.
template <std::size_t channels>
[[gnu::always_inline]] inline std::uint64_t transparent64(const std::uint8_t* from) {
  std::uint64_t bits = 0;
#if QAV_KERNEL_LEVEL >= 2
  for (std::size_t v = 0; v < channels; ++v) {
    const __m512i pixels = _mm512_loadu_si512(from + 64 * v);
    if constexpr (channels == 2)
      bits |= std::uint64_t{_mm512_testn_epi16_mask(pixels, _mm512_set1_epi16(-256))} << (32 * v);
    else
      bits |= std::uint64_t{_mm512_testn_epi32_mask(pixels, _mm512_set1_epi32(-16777216))} << (16 * v);
  }
#elif QAV_KERNEL_LEVEL == 1
  for (std::size_t v = 0; v < 2 * channels; ++v) {
    const U8 bytes = load<U8>(from + 32 * v);
    const auto zero = static_cast<std::uint32_t>(equalBits(bytes, U8{}));
    // One bit of every two or four is that of an alpha byte.
    constexpr unsigned alphas = channels == 2 ? 0xAAAAAAAAu : 0x88888888u;
    bits |= std::uint64_t{_pext_u32(zero, alphas)} << (32 / channels * v);
  }
#else
  for (std::size_t i = 0; i < 64; ++i) bits |= std::uint64_t{from[channels * (i + 1) - 1] == 0} << i;
#endif
  return bits;
}

std::uint64_t reverseBitsOfBytes(std::uint64_t bits) {
  bits = (bits >> 1 & 0x5555555555555555u) | (bits & 0x5555555555555555u) << 1;
  bits = (bits >> 2 & 0x3333333333333333u) | (bits & 0x3333333333333333u) << 2;
  return (bits >> 4 & 0x0F0F0F0F0F0F0F0Fu) | (bits & 0x0F0F0F0F0F0F0F0Fu) << 4;
}

template <std::size_t channels>
void transparentBitsOf(const std::uint8_t* from, std::size_t pixels, std::uint8_t* bits) {
  std::size_t i = 0;
  for (; i + 64 <= pixels; i += 64, bits += 8) {
    const std::uint64_t reversed = reverseBitsOfBytes(transparent64<channels>(from + channels * i));
    std::memcpy(bits, &reversed, 8);
  }
  for (; i < pixels; i += 8) {
    unsigned byte = 0;
    for (std::size_t b = 0; b < 8 && i + b < pixels; ++b)
      if (from[channels * (i + b + 1) - 1] == 0) byte |= 128u >> b;
    *bits++ = static_cast<std::uint8_t>(byte);
  }
}

void transparentBits(const std::uint8_t* from, std::size_t pixels, int channels, std::uint8_t* bits) {
  if (channels == 2) return transparentBitsOf<2>(from, pixels, bits);
  transparentBitsOf<4>(from, pixels, bits);
}

void equalToNext(const std::uint8_t* samples, std::size_t words, std::uint64_t* equal) {
  for (; words > 0; --words, samples += 64) {
    std::uint64_t bits = 0;
#if QAV_KERNEL_LEVEL >= 1
    for (std::size_t v = 0; v < 64; v += kVectorBytes)
      bits |= equalBits(load<U8>(samples + v), load<U8>(samples + v + 1)) << v;
#else
    for (std::size_t i = 0; i < 64; ++i) bits |= std::uint64_t{samples[i] == samples[i + 1]} << i;
#endif
    *equal++ = bits;
  }
}

// 64 bits from any place on.
[[gnu::always_inline]] inline std::uint64_t bitsAt(const std::uint64_t* words, std::size_t at) {
  const std::uint64_t* const word = words + at / 64;
  return word[0] >> at % 64 | word[1] << 1 << (63 - at % 64);
}

[[gnu::always_inline]] inline std::size_t lowestBit(std::uint64_t bits) {
  return static_cast<std::size_t>(__builtin_ctzll(bits));
}

constexpr std::size_t kLongest = 128;  // of a run or a literal

// Samples of the run that begins at `at`, up to kLongest. `equal` has its first 64 bits.
[[gnu::always_inline]] inline std::size_t runLength(const std::uint64_t* words, std::size_t at, std::uint64_t equal) {
  if (~equal) return lowestBit(~equal) + 1;
  const std::uint64_t further = ~bitsAt(words, at + 64) & ~0ull >> 1;
  return further ? 64 + lowestBit(further) + 1 : kLongest;
}

// Samples of the literal that begins at `at`: up to the first run of three or more, or of two that no single sample
// follows (one between single samples is cheaper within the literal). A run of two that its 128th sample would cut
// stays outside too.
[[gnu::always_inline]] inline std::size_t literalLength(const std::uint64_t* words, std::size_t at,
                                                        std::uint64_t equal) {
  const std::uint64_t further = bitsAt(words, at + 64);
  const std::uint64_t ends = equal & ((equal >> 1 | further << 63) | (equal >> 2 | further << 62));
  if (ends) return lowestBit(ends);
  const std::uint64_t beyond = bitsAt(words, at + 128);
  const std::uint64_t furtherEnds = further & ((further >> 1 | beyond << 63) | (further >> 2 | beyond << 62));
  if (furtherEnds) return 64 + lowestBit(furtherEnds);
  return kLongest - (further >> 63);
}

// The records of one run or one literal at a time, `write` deciding whether they are stored or only counted.
//
// A literal is a record whose length may still grow, and single samples and folded pairs do make it grow; so where it
// ends is known from the samples alone. The run that ends it is written with it: a literal is not closed before.
template <bool write>
[[gnu::always_inline]] inline std::size_t makeRecords(RunLengthInput input, std::size_t at, std::uint8_t* records,
                                                      std::size_t& filled) {
  const std::uint8_t* const samples = input.samples;
  std::size_t fill = filled;
  const auto addRun = [&](std::uint64_t equal) {
    const std::size_t length = runLength(input.equal, at, equal);
    if constexpr (write) {
      records[fill] = static_cast<std::uint8_t>(257 - length);
      records[fill + 1] = samples[at];
    }
    fill += 2;
    at += length;
  };
  while (at < input.count && fill < kRunLengthFull) {
    const std::uint64_t equal = bitsAt(input.equal, at);
    if (equal & 1) {
      addRun(equal);
      continue;
    }
    const std::size_t length = literalLength(input.equal, at, equal);
    if constexpr (write) {
      records[fill] = static_cast<std::uint8_t>(length - 1);
      std::memcpy(records + fill + 1, samples + at, kLongest);
    }
    fill += 1 + length;
    at += length;
    if (length < kLongest && at < input.end) {
      const std::uint64_t next = bitsAt(input.equal, at);
      if (next & 1) addRun(next);
    }
  }
  filled = fill;
  return at;
}

std::size_t runLengthRecords(const RunLengthInput& input, std::size_t at, std::uint8_t* records, std::size_t& filled) {
  return makeRecords<true>(input, at, records, filled);
}

std::size_t runLengthSize(const RunLengthInput& input, std::size_t at, std::uint8_t* records, std::size_t& filled) {
  return makeRecords<false>(input, at, records, filled);
}

}  // namespace

extern const PrintSamplesKernels printSamples;
const PrintSamplesKernels printSamples = {&whitenGrey,  &whitenColour,     &transparentBits,
                                          &equalToNext, &runLengthRecords, &runLengthSize};

#include "RegionEnd.h"
