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

// Where records are being made: `at` in the samples, `fill` in the buffer.
struct RecordPlace {
  std::size_t at;
  std::size_t fill;
};

// Records of runs that a buffer takes before it counts as full.
[[gnu::always_inline]] inline std::size_t recordsToFull(std::size_t fill) { return (kRunLengthFull - fill + 1) / 2; }

[[gnu::always_inline]] inline std::size_t least(std::size_t a, std::size_t b) { return a < b ? a : b; }

// Records of the longest kind for `length` samples, as long as more samples follow. Returns how many samples they take.
template <bool write>
[[gnu::always_inline]] inline std::size_t addLongest(std::uint8_t value, std::size_t length, std::uint8_t* records,
                                                     std::size_t& fill) {
  const std::size_t count = least((length - 1) / kLongest, recordsToFull(fill));
  if constexpr (write) {
    const U16 record = splat<U16>(static_cast<std::uint16_t>((257 - kLongest) | std::size_t{value} << 8));
    for (std::size_t i = 0; i < count; i += kLanes<U16>) store(records + fill + 2 * i, record);
  }
  fill += 2 * count;
  return kLongest * count;
}

// Samples of the run that `at` lies in, from there on; what is behind those that records may begin at is only counted
// as far as a record reaches.
[[gnu::always_inline]] inline std::size_t longRunLength(const RunLengthInput& input, std::size_t at) {
  const std::size_t limit = (input.count + kLongest + 63) / 64;
  std::size_t word = at / 64;
  std::uint64_t ends = ~input.equal[word] & ~0ull << at % 64;
  while (!ends && word < limit) ends = ~input.equal[++word];
  const std::size_t length = 64 * word + (ends ? lowestBit(ends) : 0) + 1 - at;
  return least(length, (input.count - at + kLongest - 1) / kLongest * kLongest + 1);
}

#if QAV_KERNEL_LEVEL >= 2

// Where runs end: the place of the last sample, and its value 16 bits higher.
struct RunEnds {
  static constexpr std::size_t kWords = 12;       // of `equal` that are looked at together
  static constexpr std::size_t kMostInWord = 32;  // more would have to be runs of one sample

  std::size_t base = 0;                               // the sample that places are counted from
  std::size_t count = 0;                              // of runs
  std::uint32_t end[1 + kMostInWord * (kWords + 1)];  // behind the end before the first run
};

// The runs from sample `at` on that end within the next words, or up to a word with too many.
[[gnu::always_inline]] inline void findRunEnds(const RunLengthInput& input, std::size_t at, RunEnds& runs) {
  constexpr std::size_t kAtOnce = 6;  // branches on how many there are would be foretold wrong too often
  const std::size_t first = at / 64, left = input.count / 64 - first;
  const std::size_t words = left < RunEnds::kWords ? left : RunEnds::kWords;
  const std::uint8_t* const samples = input.samples + 64 * first;
  std::uint32_t* to = runs.end;
  *to++ = static_cast<std::uint32_t>(at % 64 - 1);
  std::uint64_t wanted = ~0ull << at % 64;
  for (std::size_t w = 0; w < words; ++w, wanted = ~0ull) {
    std::uint64_t ends = ~input.equal[first + w] & wanted;
    const auto found = static_cast<std::size_t>(__builtin_popcountll(ends));
    if (found > RunEnds::kMostInWord) break;
    const auto put = [&](std::size_t i) {
      const std::size_t place = 64 * w + _tzcnt_u64(ends);
      to[i] = static_cast<std::uint32_t>(place | std::size_t{samples[place]} << 16);
      ends = _blsr_u64(ends);
    };
    for (std::size_t i = 0; i < kAtOnce; ++i) put(i);
    for (std::size_t i = kAtOnce; i < found; ++i) put(i);
    to += found;
  }
  runs.base = 64 * first;
  runs.count = static_cast<std::size_t>(to - runs.end) - 1;
}

// The records of runs that follow one another, up to one of a single sample.
template <bool write>
[[gnu::always_inline]] inline void addRuns(const RunLengthInput& input, RecordPlace& place, std::uint8_t* records) {
  RunEnds runs;
  findRunEnds(input, place.at, runs);
  std::size_t fill = place.fill, done = 0;
  while (done < runs.count && fill < kRunLengthFull) {
    const U32 end = load<U32>(runs.end + 1 + done), length = (end - load<U32>(runs.end + done)) & 0xFFFF;
    const auto others = _mm512_cmpgt_epu32_mask((__m512i)(length - 2), (__m512i)splat<U32>(kLongest - 2));
    const std::size_t most = least(least(recordsToFull(fill), runs.count - done), kLanes<U32>);
    const std::size_t alike = lowestBit(others | 1u << most);
    if constexpr (write)
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(records + fill),
                          _mm512_cvtepi32_epi16((__m512i)(((1 - length) & 0xFF) | (end >> 8 & 0xFF00))));
    fill += 2 * alike;
    done += alike;
    if (alike == most) continue;
    const std::size_t other = (runs.end[done + 1] - runs.end[done]) & 0xFFFF;
    if (other == 1) break;
    runs.end[done] += static_cast<std::uint32_t>(
        addLongest<write>(static_cast<std::uint8_t>(runs.end[done + 1] >> 16), other, records, fill));
  }
  place.at = runs.base + static_cast<std::uint16_t>(runs.end[done] + 1);
  place.fill = fill;
}

#endif

// The records of one run or one literal at a time, `write` deciding whether they are stored or only counted.
//
// A literal is a record whose length may still grow, and single samples and folded pairs do make it grow; so where it
// ends is known from the samples alone. The run that ends it is written with it: a literal is not closed before.
template <bool write>
[[gnu::always_inline]] inline std::size_t makeRecords(RunLengthInput input, std::size_t at, std::uint8_t* records,
                                                      std::size_t& filled) {
  const std::uint8_t* const samples = input.samples;
  RecordPlace place{at, filled};
  const auto addRun = [&](std::uint64_t equal) {
    const std::size_t length = runLength(input.equal, place.at, equal);
    if constexpr (write) {
      records[place.fill] = static_cast<std::uint8_t>(257 - length);
      records[place.fill + 1] = samples[place.at];
    }
    place.fill += 2;
    place.at += length;
  };
#if QAV_KERNEL_LEVEL >= 2
  constexpr std::size_t kWorthwhile = 8, kApart = 4;  // records
  std::size_t apart = 0;  // records to be made one by one before many runs are tried for again
#endif
  while (place.at < input.count && place.fill < kRunLengthFull) {
    const std::uint64_t equal = bitsAt(input.equal, place.at);
    if (!~equal) {
      const std::size_t length = longRunLength(input, place.at);
      const std::size_t taken = addLongest<write>(samples[place.at], length, records, place.fill);
      place.at += taken;
      if (taken == 0) addRun(equal);
      continue;
    }
#if QAV_KERNEL_LEVEL >= 2
    if (apart > 0) {
      --apart;
    } else if ((equal & 1) && place.at / 64 + 2 < input.count / 64) {
      const std::size_t before = place.fill;
      addRuns<write>(input, place, records);
      if (place.fill - before < 2 * kWorthwhile) apart = kApart;
      continue;
    }
#endif
    if (equal & 1) {
      addRun(equal);
      continue;
    }
#if QAV_KERNEL_LEVEL >= 2
    apart = kApart;
#endif
    const std::size_t length = literalLength(input.equal, place.at, equal);
    if constexpr (write) {
      records[place.fill] = static_cast<std::uint8_t>(length - 1);
      std::memcpy(records + place.fill + 1, samples + place.at, kLongest);
    }
    place.fill += 1 + length;
    place.at += length;
    if (length < kLongest && place.at < input.end) {
      const std::uint64_t next = bitsAt(input.equal, place.at);
      if (next & 1) addRun(next);
    }
  }
  filled = place.fill;
  return place.at;
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
