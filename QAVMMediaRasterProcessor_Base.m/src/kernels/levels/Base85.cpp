#include "kernels/Base85.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

#if QAV_KERNEL_LEVEL < 3

std::uint32_t bigEndian(const std::uint8_t* data) {
  return std::uint32_t{data[0]} << 24 | std::uint32_t{data[1]} << 16 | std::uint32_t{data[2]} << 8 | data[3];
}

bool encodeGroup(const std::uint8_t* data, char* text) {
  std::uint32_t value = bigEndian(data);
  if (value == 0) return false;
  for (int k = 4; k >= 0; --k) {
    text[k] = static_cast<char>(kBase85Zero + value % kBase85);
    value /= kBase85;
  }
  return true;
}

void decodeGroup(const std::uint8_t* digits, std::uint8_t* bytes) {
  std::uint32_t value = 0;
  for (int k = 0; k < 5; ++k) value = value * kBase85 + (digits[k] - std::uint32_t{kBase85Zero});
  for (int k = 0; k < 4; ++k) bytes[k] = static_cast<std::uint8_t>(value >> (24 - 8 * k));
}

#endif

#if QAV_KERNEL_LEVEL >= 1

// Eight or sixteen groups at once. The value of a group is split by 85^2 and 85: the quotients by exact
// multiplications, or by float products whose rounding is harmless for every value they can meet.
//
// A group's digits stand in one 32-bit lane as d0 d1 d3 d4 (`outer`) and d2 (`middle`).
#if QAV_KERNEL_LEVEL >= 3
struct Digits {
  __m512i outer, middle;
};

[[gnu::always_inline]] inline Digits digitsOf(__m512i value) {
  const __m512i reciprocal = _mm512_set1_epi64(2434904643);  // 2^44 / 7225, rounded up
  const __m512i even = _mm512_srli_epi64(_mm512_mul_epu32(value, reciprocal), 44);
  const __m512i odd = _mm512_srli_epi64(_mm512_mul_epu32(_mm512_srli_epi64(value, 32), reciprocal), 12);
  const __m512i high = _mm512_mask_mov_epi32(even, 0xAAAA, odd);
  const __m512i low = _mm512_sub_epi32(value, _mm512_mullo_epi32(high, _mm512_set1_epi32(7225)));
  const __m512i pair = _mm512_cvttps_epi32(_mm512_mul_ps(_mm512_cvtepi32_ps(high), _mm512_set1_ps(1.0f / 85)));
  const __m512i middle = _mm512_sub_epi32(high, _mm512_madd_epi16(pair, _mm512_set1_epi32(85)));
  const __m512i pairs = _mm512_or_si512(pair, _mm512_slli_epi32(low, 16));
  const __m512i first = _mm512_srli_epi16(_mm512_mulhi_epu16(pairs, _mm512_set1_epi16(-16191)), 6);  // 49345 / 2^22
  const __m512i second = _mm512_sub_epi16(pairs, _mm512_mullo_epi16(first, _mm512_set1_epi16(85)));
  const __m512i outer = _mm512_or_si512(first, _mm512_slli_epi16(second, 8));
  return {_mm512_add_epi8(outer, _mm512_set1_epi8('!')), _mm512_add_epi8(middle, _mm512_set1_epi8('!'))};
}

// Where each character of sixteen groups comes from: bytes of `outer` are 0 to 63, of `middle` 64 and on. With a new
// line after `groupsBefore` groups (none for 0); that stands in the second byte of `middle`.
struct Places {
  std::uint8_t at[128];
};

constexpr Places placesWith(std::size_t groupsBefore) {
  Places places{};
  std::size_t to = 0;
  for (std::size_t group = 0; group < 16; ++group) {
    for (std::size_t digit = 0; digit < 5; ++digit) {
      const std::size_t from = digit == 2 ? 64 : digit < 2 ? digit : digit - 1;
      places.at[to++] = static_cast<std::uint8_t>(4 * group + from);
    }
    if (group + 1 == groupsBefore) places.at[to++] = 65;
  }
  return places;
}

constexpr Places kPlaces[5] = {placesWith(0), placesWith(4), placesWith(8), placesWith(12), placesWith(16)};

[[gnu::always_inline]] inline __m512i bigEndianLanes(__m512i bytes) {
  return _mm512_shuffle_epi8(bytes, _mm512_set4_epi32(0x0C0D0E0F, 0x08090A0B, 0x04050607, 0x00010203));
}

[[gnu::always_inline]] inline __m512i placed(Digits digits, const std::uint8_t* places) {
  return _mm512_permutex2var_epi8(digits.outer, _mm512_loadu_si512(places), digits.middle);
}

// Up to four lines, which are up to five vectors, with the new lines after 20, 4, 8, 12 and 16 groups of them. False if
// a group is zero.
[[gnu::always_inline]] inline bool encodeFourLines(const std::uint8_t* data, std::size_t lines, char newLine,
                                                   char* text) {
  const __m512i newLines = _mm512_set1_epi32(static_cast<std::uint8_t>(newLine) << 8);
  const __m512i middleDigit = _mm512_set1_epi32(0xFF);
  for (std::size_t v = 0; 16 * v < kBase85LineGroups * lines; ++v) {
    const std::size_t left = kBase85LineGroups * lines - 16 * v;
    const auto lanes = static_cast<__mmask16>(left < 16 ? (1u << left) - 1 : 0xFFFF);
    const __m512i value = bigEndianLanes(_mm512_maskz_loadu_epi32(lanes, data + 64 * v));
    if (_mm512_mask_testn_epi32_mask(lanes, value, value)) return false;
    Digits digits = digitsOf(value);
    digits.middle = _mm512_ternarylogic_epi32(digits.middle, middleDigit, newLines, 0xEA);  // (a & b) | c
    if (left < 16) {
      _mm512_mask_storeu_epi8(text, (1ull << (5 * left + 1)) - 1, placed(digits, kPlaces[v].at));
      break;
    }
    // 81 characters; where no new line is among them the last one is overwritten by the next vector.
    _mm512_storeu_si512(text, placed(digits, kPlaces[v].at));
    _mm512_storeu_si512(text + 17, placed(digits, kPlaces[v].at + 17));
    text += v == 0 ? 80 : 81;
  }
  return true;
}

std::size_t encodeLines(const std::uint8_t* data, std::size_t lines, char newLine, char* text) {
  std::size_t done = 0;
  for (; done + 4 <= lines; done += 4)
    if (!encodeFourLines(data + kBase85LineBytes * done, 4, newLine, text + kBase85LineLength * done)) return done;
  const std::size_t rest = lines - done;
  return encodeFourLines(data + kBase85LineBytes * done, rest, newLine, text + kBase85LineLength * done) ? lines : done;
}

std::size_t encodeGroups(const std::uint8_t* data, std::size_t groups, char* text) {
  std::size_t done = 0;
  while (done < groups) {
    const std::size_t count = groups - done < 16 ? groups - done : 16;
    const auto lanes = static_cast<__mmask16>((1u << count) - 1);
    const __m512i value = bigEndianLanes(_mm512_maskz_loadu_epi32(lanes, data + 4 * done));
    const unsigned zeros = _mm512_mask_testn_epi32_mask(lanes, value, value);
    const std::size_t whole = zeros ? static_cast<std::size_t>(__builtin_ctz(zeros)) : count;
    const Digits digits = digitsOf(value);
    char* const to = text + 5 * done;
    const std::size_t length = 5 * whole;
    _mm512_mask_storeu_epi8(to, length >= 64 ? ~0ull : (1ull << length) - 1, placed(digits, kPlaces[0].at));
    if (length > 64) _mm512_mask_storeu_epi8(to + 64, (1ull << (length - 64)) - 1, placed(digits, kPlaces[0].at + 64));
    done += whole;
    if (zeros) break;
  }
  return done;
}

constexpr Places decodingPlaces(bool last) {
  Places places{};
  for (std::size_t i = 0; i < 64; ++i) places.at[i] = static_cast<std::uint8_t>(i / 4 * 5 + (last ? 4 : i % 4));
  return places;
}

constexpr Places kLeadingDigits = decodingPlaces(false);
constexpr Places kLastDigits = decodingPlaces(true);

[[gnu::always_inline]] inline __m512i valuesOf(__m512i front, __m512i back) {
  const __m512i zeroDigit = _mm512_set1_epi8('!');
  front = _mm512_sub_epi8(front, zeroDigit);
  back = _mm512_sub_epi8(back, zeroDigit);
  const __m512i leading = _mm512_permutex2var_epi8(front, _mm512_loadu_si512(kLeadingDigits.at), back);
  const __m512i last =
      _mm512_maskz_permutex2var_epi8(0x1111111111111111, front, _mm512_loadu_si512(kLastDigits.at), back);
  const __m512i pairs = _mm512_maddubs_epi16(leading, _mm512_set1_epi16(1 << 8 | 85));
  const __m512i fours = _mm512_madd_epi16(pairs, _mm512_set1_epi32(1 << 16 | 7225));
  return bigEndianLanes(_mm512_add_epi32(_mm512_mullo_epi32(fours, _mm512_set1_epi32(85)), last));
}

void decodeGroups(const std::uint8_t* digits, std::size_t groups, std::uint8_t* bytes) {
  for (; groups >= 16; groups -= 16, digits += 80, bytes += 64)
    _mm512_storeu_si512(
        bytes, valuesOf(_mm512_loadu_si512(digits),
                        _mm512_castsi128_si512(_mm_loadu_si128(reinterpret_cast<const __m128i*>(digits + 64)))));
  if (groups == 0) return;
  const std::size_t length = 5 * groups;
  const __mmask64 front = length >= 64 ? ~0ull : (1ull << length) - 1;
  const __mmask64 back = length > 64 ? (1ull << (length - 64)) - 1 : 0;
  const __m512i values =
      valuesOf(_mm512_maskz_loadu_epi8(front, digits), _mm512_maskz_loadu_epi8(back, digits + (back ? 64 : 0)));
  _mm512_mask_storeu_epi32(bytes, static_cast<__mmask16>((1u << groups) - 1), values);
}

#else

struct Digits {
  __m256i outer, middle;
};

[[gnu::always_inline]] inline Digits digitsOf(__m256i value) {
  const __m256i reciprocal = _mm256_set1_epi64x(2434904643);  // 2^44 / 7225, rounded up
  const __m256i even = _mm256_srli_epi64(_mm256_mul_epu32(value, reciprocal), 44);
  const __m256i odd = _mm256_srli_epi64(_mm256_mul_epu32(_mm256_srli_epi64(value, 32), reciprocal), 44);
  const __m256i high = _mm256_or_si256(even, _mm256_slli_epi64(odd, 32));
  const __m256i low = _mm256_sub_epi32(value, _mm256_mullo_epi32(high, _mm256_set1_epi32(7225)));
  const __m256i pair = _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_cvtepi32_ps(high), _mm256_set1_ps(1.0f / 85)));
  const __m256i middle = _mm256_sub_epi32(high, _mm256_madd_epi16(pair, _mm256_set1_epi32(85)));
  const __m256i pairs = _mm256_or_si256(pair, _mm256_slli_epi32(low, 16));
  const __m256i first = _mm256_srli_epi16(_mm256_mulhi_epu16(pairs, _mm256_set1_epi16(-16191)), 6);  // 49345 / 2^22
  const __m256i second = _mm256_sub_epi16(pairs, _mm256_mullo_epi16(first, _mm256_set1_epi16(85)));
  const __m256i outer = _mm256_or_si256(first, _mm256_slli_epi16(second, 8));
  return {_mm256_add_epi8(outer, _mm256_set1_epi8('!')), _mm256_add_epi8(middle, _mm256_set1_epi8('!'))};
}

[[gnu::always_inline]] inline __m256i bigEndianLanes(__m256i bytes) {
  return _mm256_shuffle_epi8(
      bytes, _mm256_broadcastsi128_si256(_mm_set_epi32(0x0C0D0E0F, 0x08090A0B, 0x04050607, 0x00010203)));
}

// The twenty characters of the four groups in each half of the vectors.
[[gnu::always_inline]] inline void storeCharacters(Digits digits, char* text) {
  const __m256i outerPlaces =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, -1, 2, 3, 4, 5, -1, 6, 7, 8, 9, -1, 10, 11, 12));
  const __m256i middlePlaces =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(-1, -1, 0, -1, -1, -1, -1, 4, -1, -1, -1, -1, 8, -1, -1, -1));
  const __m256i front =
      _mm256_or_si256(_mm256_shuffle_epi8(digits.outer, outerPlaces), _mm256_shuffle_epi8(digits.middle, middlePlaces));
  const __m256i outerRest = _mm256_shuffle_epi8(digits.outer, _mm256_set1_epi32(0x0F0EFF0D));
  const __m256i middleRest = _mm256_shuffle_epi8(digits.middle, _mm256_set1_epi32(static_cast<int>(0xFFFF0CFF)));
  const __m256i back = _mm256_or_si256(outerRest, middleRest);
  const int rests[2] = {_mm256_extract_epi32(back, 0), _mm256_extract_epi32(back, 4)};
  _mm_storeu_si128(reinterpret_cast<__m128i*>(text), _mm256_castsi256_si128(front));
  std::memcpy(text + 16, &rests[0], 4);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(text + 20), _mm256_extracti128_si256(front, 1));
  std::memcpy(text + 36, &rests[1], 4);
}

// Eight groups, unless one is zero.
[[gnu::always_inline]] inline bool encodeEight(const std::uint8_t* data, char* text) {
  const __m256i value = bigEndianLanes(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(data)));
  const __m256i zero = _mm256_cmpeq_epi32(value, _mm256_setzero_si256());
  if (!_mm256_testz_si256(zero, zero)) return false;
  storeCharacters(digitsOf(value), text);
  return true;
}

std::size_t encodeLines(const std::uint8_t* data, std::size_t lines, char newLine, char* text) {
  for (std::size_t done = 0; done < lines; ++done, data += 80, text += kBase85LineLength) {
    // The last eight groups begin where they fit; four are written twice.
    if (!encodeEight(data, text) || !encodeEight(data + 32, text + 40) || !encodeEight(data + 48, text + 60))
      return done;
    text[100] = newLine;
  }
  return lines;
}

std::size_t encodeGroups(const std::uint8_t* data, std::size_t groups, char* text) {
  std::size_t done = 0;
  while (done + 8 <= groups && encodeEight(data + 4 * done, text + 5 * done)) done += 8;
  while (done < groups && encodeGroup(data + 4 * done, text + 5 * done)) ++done;
  return done;
}

void decodeGroups(const std::uint8_t* digits, std::size_t groups, std::uint8_t* bytes) {
  const __m256i leadingFront =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, 3, 5, 6, 7, 8, 10, 11, 12, 13, -1, -1, -1, -1));
  const __m256i leadingBack =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 11, 12, 13, 14));
  const __m256i lastPlaces =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(0, -1, -1, -1, 5, -1, -1, -1, 10, -1, -1, -1, 15, -1, -1, -1));
  const auto loadHalves = [](const std::uint8_t* at) {
    return _mm256_sub_epi8(
        _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(at + 20), reinterpret_cast<const __m128i*>(at)),
        _mm256_set1_epi8('!'));
  };
  for (; groups >= 8; groups -= 8, digits += 40, bytes += 32) {
    const __m256i front = loadHalves(digits);     // characters 0 to 15 of twenty
    const __m256i back = loadHalves(digits + 4);  // characters 4 to 19
    const __m256i leading =
        _mm256_or_si256(_mm256_shuffle_epi8(front, leadingFront), _mm256_shuffle_epi8(back, leadingBack));
    const __m256i pairs = _mm256_maddubs_epi16(leading, _mm256_set1_epi16(1 << 8 | 85));
    const __m256i fours = _mm256_madd_epi16(pairs, _mm256_set1_epi32(1 << 16 | 7225));
    const __m256i values =
        _mm256_add_epi32(_mm256_mullo_epi32(fours, _mm256_set1_epi32(85)), _mm256_shuffle_epi8(back, lastPlaces));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), bigEndianLanes(values));
  }
  for (; groups > 0; --groups, digits += 5, bytes += 4) decodeGroup(digits, bytes);
}

#endif

#else

std::size_t encodeGroups(const std::uint8_t* data, std::size_t groups, char* text) {
  std::size_t done = 0;
  while (done < groups && encodeGroup(data + 4 * done, text + 5 * done)) ++done;
  return done;
}

std::size_t encodeLines(const std::uint8_t* data, std::size_t lines, char newLine, char* text) {
  for (std::size_t done = 0; done < lines; ++done, text += kBase85LineLength) {
    if (encodeGroups(data + 80 * done, kBase85LineGroups, text) < kBase85LineGroups) return done;
    text[100] = newLine;
  }
  return lines;
}

void decodeGroups(const std::uint8_t* digits, std::size_t groups, std::uint8_t* bytes) {
  for (; groups > 0; --groups, digits += 5, bytes += 4) decodeGroup(digits, bytes);
}

#endif

bool isDigit(std::uint8_t c) { return static_cast<std::uint8_t>(c - kBase85Zero) < kBase85; }

constexpr bool isWhiteSpace(unsigned c) {
  constexpr std::uint64_t spaces =
      1ull << 0 | 1ull << 8 | 1ull << 9 | 1ull << 10 | 1ull << 12 | 1ull << 13 | 1ull << 32;
  return c < 64 ? (spaces >> c & 1) != 0 : c == 127;
}

#if QAV_KERNEL_LEVEL >= 1

[[gnu::always_inline]] inline std::uint64_t digitBits(U8 characters) {
  const U8 digits = characters - splat<U8>(kBase85Zero);
  return equalBits(min(digits, splat<U8>(kBase85 - 1)), digits);
}

#endif

#if QAV_KERNEL_LEVEL >= 3

// The sign bit is set for white space.
constexpr Places whiteSpacePlaces() {
  Places places{};
  for (unsigned c = 0; c < 128; ++c) places.at[c] = isWhiteSpace(c) ? 128 : 0;
  return places;
}

constexpr Places kWhiteSpace = whiteSpacePlaces();

[[gnu::always_inline]] inline std::uint64_t whiteSpaceBits(__m512i characters) {
  const __m512i kinds =
      _mm512_permutex2var_epi8(_mm512_loadu_si512(kWhiteSpace.at), characters, _mm512_loadu_si512(kWhiteSpace.at + 64));
  return _mm512_movepi8_mask(_mm512_andnot_si512(characters, kinds));
}

template <bool write>
[[gnu::always_inline]] inline bool takeVectors(const std::uint8_t* text, std::size_t count, std::uint8_t* to,
                                               Base85Run& run) {
  for (; run.read + 64 <= count; run.read += 64) {
    const U8 characters = load<U8>(text + run.read);
    std::uint64_t digits = digitBits(characters);
    const std::uint64_t others = ~(digits | whiteSpaceBits((__m512i)characters));
    if (others) digits &= (others & -others) - 1;
    if constexpr (write) _mm512_storeu_si512(to + run.digits, _mm512_maskz_compress_epi8(digits, (__m512i)characters));
    run.digits += static_cast<std::size_t>(__builtin_popcountll(digits));
    if (!others) continue;
    run.read += static_cast<std::size_t>(__builtin_ctzll(others));
    return false;
  }
  return true;
}

#elif QAV_KERNEL_LEVEL >= 1

template <bool write>
[[gnu::always_inline]] inline bool takeVectors(const std::uint8_t* text, std::size_t count, std::uint8_t* to,
                                               Base85Run& run) {
  constexpr std::uint64_t all = ~0ull >> (64 - kVectorBytes);
  while (run.read + kVectorBytes <= count) {
    const U8 characters = load<U8>(text + run.read);
    const std::uint64_t others = digitBits(characters) ^ all;
    const std::size_t taken = others ? static_cast<std::size_t>(__builtin_ctzll(others)) : kVectorBytes;
    if constexpr (write) store(to + run.digits, characters);
    run.digits += taken;
    run.read += taken;
    if (!others) continue;
    if (!isWhiteSpace(text[run.read])) return false;
    ++run.read;
  }
  return true;
}

#endif

// In vectors as long as there are any; false from takeVectors says that another character stands next.
template <bool write>
[[gnu::always_inline]] inline Base85Run takeDigits(const std::uint8_t* text, std::size_t count, std::uint8_t* to) {
  Base85Run run;
#if QAV_KERNEL_LEVEL >= 1
  if (!takeVectors<write>(text, count, to, run)) return run;
#endif
  for (; run.read < count; ++run.read) {
    const std::uint8_t c = text[run.read];
    if (isDigit(c)) {
      if constexpr (write) to[run.digits] = c;
      ++run.digits;
    } else if (!isWhiteSpace(c)) {
      break;
    }
  }
  return run;
}

Base85Run countDigits(const std::uint8_t* text, std::size_t count) { return takeDigits<false>(text, count, nullptr); }

Base85Run squeezeDigits(const std::uint8_t* text, std::size_t count, std::uint8_t* digits) {
  return takeDigits<true>(text, count, digits);
}

}  // namespace

extern const Base85Kernels base85;
const Base85Kernels base85 = {&encodeGroups, &encodeLines, &countDigits, &squeezeDigits, &decodeGroups};

#include "RegionEnd.h"
