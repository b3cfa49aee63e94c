#include "kernels/G4Rows.h"

#include "RegionBegin.h"

namespace {

[[gnu::always_inline]] inline std::uint64_t bigEndian(std::uint64_t value) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  return __builtin_bswap64(value);
#else
  return value;
#endif
}

// The 64 bits from byte `from` on; those at or behind `end` count as zeros.
[[gnu::always_inline]] inline std::uint64_t loadBits(const std::uint8_t* from, const std::uint8_t* end) {
  std::uint64_t value = 0;
  if (end - from >= 8) [[likely]]
    std::memcpy(&value, from, 8);
  else
    std::memcpy(&value, from, static_cast<std::size_t>(end - from));
  return bigEndian(value);
}

// Stores a position for every one bit of `changes`; returns their number.
[[gnu::always_inline]] inline int storePositions(std::uint64_t changes, int base, int* at) {
  const int count = __builtin_popcountll(changes);
#if QAV_KERNEL_LEVEL >= 3
  alignas(64) static constexpr std::uint8_t places[64] = {
      0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
      22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43,
      44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};
  // Byte i of the spread word holds bit 63 - i of the changes; the mask then has the first pixel lowest.
  const __m512i iota = _mm512_load_si512(places);
  const __m512i spread = _mm512_shuffle_epi8(
      _mm512_set1_epi64(static_cast<long long>(changes)),
      _mm512_xor_si512(_mm512_srli_epi16(_mm512_and_si512(iota, _mm512_set1_epi8(0x38)), 3), _mm512_set1_epi8(7)));
  const __mmask64 mask = _mm512_test_epi8_mask(spread, _mm512_set1_epi64(0x0102040810204080));
  __m512i found = _mm512_maskz_compress_epi8(mask, iota);
  const __m512i bases = _mm512_set1_epi32(base);
  _mm512_storeu_si512(at, _mm512_add_epi32(bases, _mm512_cvtepu8_epi32(_mm512_castsi512_si128(found))));
  for (int done = 16; done < count; done += 16) {
    found = _mm512_alignr_epi64(found, found, 2);
    _mm512_storeu_si512(at + done, _mm512_add_epi32(bases, _mm512_cvtepu8_epi32(_mm512_castsi512_si128(found))));
  }
#else
  // Eight at a time whether there are as many or not: cheaper than a branch that nothing foretells.
  for (int done = 0; done < count; done += 8) {
    for (int i = 0; i < 8; ++i) {
      const int bit = changes == 0 ? 63 : __builtin_clzll(changes);
      *at++ = static_cast<int>(static_cast<unsigned>(base) + static_cast<unsigned>(bit));
      changes &= ~(std::uint64_t{1} << 63 >> bit);
    }
  }
#endif
  return count;
}

std::size_t findChanges(const std::uint8_t* bitmap, const std::uint8_t* end, std::uint64_t firstBit, int width,
                        int* at) {
  int* const begin = at;
  const std::uint64_t pastBit = firstBit + static_cast<std::uint64_t>(width);
  std::uint64_t mask = ~std::uint64_t{0} >> (firstBit % 64);
  std::uint64_t previous = 0;
  for (std::uint64_t word = firstBit / 64; word * 64 < pastBit; ++word) {
    std::uint64_t bits = loadBits(bitmap + word * 8, end) & mask;
    mask = ~std::uint64_t{0};
    // Of the last word, what belongs to the next row takes the colour of the row's last pixel: no change there.
    const std::uint64_t left = pastBit - word * 64;
    if (left < 64) {
      const std::uint64_t next = ~std::uint64_t{0} >> left;
      bits = bits >> (64 - left) & 1 ? bits | next : bits & ~next;
    }
    const std::uint64_t changes = bits ^ (bits >> 1 | previous << 63);
    previous = bits & 1;
    if (changes == 0) continue;
    const auto base = static_cast<std::int64_t>(word * 64) - static_cast<std::int64_t>(firstBit) + 1;
    at += storePositions(changes, static_cast<int>(base), at);
  }
  return static_cast<std::size_t>(at - begin);
}

// The `length` lowest bits of `code`, at most 56. Whole bytes are stored at once, the started one again and again.
[[gnu::always_inline]] inline void put(G4Output& output, std::uint64_t code, int length) {
  if (length == 0) return;
  output.pending |= code << (64 - output.held - length);
  output.held += length;
  const std::uint64_t value = bigEndian(output.pending);
  if (output.bytes + 8 <= output.capacity) [[likely]]
    std::memcpy(output.to + output.bytes, &value, 8);
  else if (output.bytes < output.capacity)
    std::memcpy(output.to + output.bytes, &value, output.capacity - output.bytes);
  const int whole = output.held >> 3;
  output.bytes += static_cast<std::size_t>(whole);
  output.pending <<= whole * 8;
  output.held &= 7;
}

// Codes that are collected before they are put.
struct Codes {
  std::uint64_t bits = 0;
  int length = 0;

  [[gnu::always_inline]] void add(std::uint64_t code, int count) {
    bits = bits << count | code;
    length += count;
  }
  [[gnu::always_inline]] void add(G4Code code) { add(code.bits >> 5, static_cast<int>(code.bits & 31)); }
};

void putRun(G4Output& output, const G4RunCodes& codes, bool black, int run) {
  const G4Code longest = codes.longest[black];
  for (; run >= kG4Runs; run -= kG4LongestMakeUp) put(output, longest.bits >> 5, static_cast<int>(longest.bits & 31));
  const G4Code last = codes.run[black][run];
  put(output, last.bits >> 5, static_cast<int>(last.bits & 31));
}

[[gnu::always_inline]] inline void putHorizontal(G4Output& output, const G4RunCodes& codes, bool black, int first,
                                                 int second) {
  constexpr int mode = 0b001, modeBits = 3;
  if ((first < kG4Runs) & (second < kG4Runs)) [[likely]] {
    Codes all{mode, modeBits};
    all.add(codes.run[black][first]);
    all.add(codes.run[!black][second]);
    put(output, all.bits, all.length);
    return;
  }
  put(output, mode, modeBits);
  putRun(output, codes, black, first);
  putRun(output, codes, !black, second);
}

constexpr G4Code kVerticals[] = {{0b0000010 << 5 | 7}, {0b000010 << 5 | 6}, {0b010 << 5 | 3},    {0b1 << 5 | 1},
                                 {0b011 << 5 | 3},     {0b000011 << 5 | 6}, {0b0000011 << 5 | 7}};

// Codes elements as long as each is near the one that b1 comes to if it moves to the next element each time.
[[gnu::always_inline]] inline void putVerticalsInStep(G4Output& output, const int*& a, const int*& b) {
  constexpr int most = 56, longest = 7;
  for (bool inStep = true; inStep;) {
    Codes all;
    while (all.length <= most - longest) {
      const auto offset = static_cast<unsigned>(*a - *b + 3);
      inStep = !((offset > 6) | (b[1] <= *a) | (b[-1] > *a));
      if (!inStep) break;
      all.add(kVerticals[offset]);
      ++a;
      ++b;
    }
    put(output, all.bits, all.length);
  }
}

// Works on a copy of the output's state: stores into the output could otherwise change it, for all that the compiler
// knows.
void codeRow(const int* a, const int* b, int width, const G4RunCodes& codes, G4Output& result) {
  G4Output output = result;
  const int* const begin = a;
  for (int a0 = 0; a0 <= width;) {
    putVerticalsInStep(output, a, b);
    if (a != begin && a[-1] > a0) a0 = a[-1];
    const int a1 = *a;
    const int offset = a1 - *b;
    if (b[1] < a1) {
      put(output, 0b0001, 4);
      a0 = b[1];
      b += 2;
    } else if (offset >= -3 && offset <= 3) {
      const G4Code code = kVerticals[offset + 3];
      put(output, code.bits >> 5, static_cast<int>(code.bits & 31));
      a0 = a1;
      ++a;
      // The next b1 has the other colour; it may be the element before this one. The entry before the first is 0.
      b += b[-1] > a0 ? -1 : 1;
      while (*b <= a0 && a0 <= width) b += 2;
    } else {
      putHorizontal(output, codes, (a - begin) % 2 != 0, a1 - (a0 > 1 ? a0 : 1), a[1] - a1);
      a0 = a[1];
      a += 2;
      while (*b <= a0 && a0 <= width) b += 2;
    }
  }
  result = output;
}

[[gnu::always_inline]] inline void refill(G4Input& input) {
  input.window |= loadBits(input.next, input.end) >> input.held;
  input.next += (63 - input.held) >> 3;
  input.held |= 56;
}

[[gnu::always_inline]] inline void skip(G4Input& input, int count) {
  input.window <<= count;
  input.held -= count;
}

#if QAV_KERNEL_LEVEL >= 1
[[gnu::always_inline]] inline __m256i load(const int* at) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
}
#endif

// Stores the changing elements that the group's codes give if b1 moves to the next element each time. Returns a mask of
// those, the first lowest, for which it does so, and which lie to the right of the one before and within the row.
[[gnu::always_inline]] inline unsigned moveInStep(const G4Group& group, const int* b1, int a0, int width, int* out) {
#if QAV_KERNEL_LEVEL >= 1
  const __m256i offsets = _mm256_cvtepi8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(group.offset)));
  const __m256i a1 = _mm256_add_epi32(load(b1), offsets);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), a1);
  const __m256i moved = _mm256_permutevar8x32_epi32(a1, _mm256_setr_epi32(0, 0, 1, 2, 3, 4, 5, 6));
  const __m256i before = _mm256_blend_epi32(moved, _mm256_set1_epi32(a0), 1);
  const __m256i right = _mm256_and_si256(_mm256_cmpgt_epi32(a1, before), _mm256_cmpgt_epi32(load(b1 + 1), a1));
  const __m256i wrong =
      _mm256_or_si256(_mm256_cmpgt_epi32(load(b1 - 1), a1), _mm256_cmpgt_epi32(a1, _mm256_set1_epi32(width)));
  return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(_mm256_andnot_si256(wrong, right))));
#else
  unsigned good = 0;
  for (int i = 0; i < group.codes; ++i) {
    const int a1 = b1[i] + group.offset[i];
    if (!((a1 > a0) & (a1 <= width) & (b1[i + 1] > a1) & (b1[i - 1] <= a1))) break;
    good |= 1u << i;
    out[i] = a0 = a1;
  }
  return good;
#endif
}

enum class Next { Vertical, Other, RowDone };

// Takes a code that does not move in step.
[[gnu::always_inline]] inline Next moveFreely(int offset, int bits, G4Input& input, G4Row& row) {
  const int a1 = *row.b1 + offset;
  if (a1 <= row.a0) return Next::Other;
  skip(input, bits);
  if (a1 > row.width) return Next::RowDone;
  *row.out++ = row.a0 = a1;
  // The next b1 has the other colour; after a step to the left it may be the element before this one.
  row.b1 += row.b1[-1] > a1 ? -1 : 1;
  while (*row.b1 <= a1) row.b1 += 2;
  return Next::Vertical;
}

[[gnu::always_inline]] inline Next takeGroup(const G4Group& group, G4Input& input, G4Row& row) {
  const unsigned all = (1u << group.codes) - 1;
  const unsigned good = moveInStep(group, row.b1, row.a0, row.width, row.out) & all;
  if (good == all) [[likely]] {
    if (all == 0) return Next::Other;
    skip(input, group.bits);
    row.b1 += group.codes;
    row.out += group.codes;
    row.a0 = row.out[-1];
    return Next::Vertical;
  }
  const int count = __builtin_ctz(~good);
  const int bits = group.bitsOf(count);
  skip(input, bits);
  row.b1 += count;
  row.out += count;
  if (count > 0) row.a0 = row.out[-1];
  return moveFreely(group.offset[count], group.bitsOf(count + 1) - bits, input, row);
}

bool decodeVerticals(const G4Group* groups, G4Input& input, G4Row& row) {
  G4Input in = input;
  G4Row here = row;
  Next next = Next::Vertical;
  while (next == Next::Vertical && in.end - in.next >= 16) {
    refill(in);
    // A group and the code behind it that does not move in step take no more than the group's bits.
    for (int n = 56 / kG4GroupBits; n > 0 && next == Next::Vertical; --n)
      next = takeGroup(groups[in.window >> (64 - kG4GroupBits)], in, here);
  }
  input = in;
  row = here;
  return next == Next::RowDone;
}

[[gnu::always_inline]] inline void storeBits(std::uint8_t* to, const std::uint8_t* end, std::uint64_t bits) {
  const std::uint64_t value = bigEndian(bits);
  if (end - to >= 8) [[likely]]
    std::memcpy(to, &value, 8);
  else if (to < end)
    std::memcpy(to, &value, static_cast<std::size_t>(end - to));
}

// Every change stores its word, whether the next one falls into the same or not: what would be a branch that nothing
// foretells is a choice of the word to go on with.
void blacken(const int* at, std::size_t count, std::uint64_t firstBit, std::uint8_t* bitmap, const std::uint8_t* end) {
  constexpr std::uint64_t all = ~std::uint64_t{0};
  if (count == 0) return;
  std::uint64_t word = firstBit / 64;
  std::uint64_t bits = loadBits(bitmap + word * 8, end);
  for (std::size_t i = 0; i < count; i += 2) {
    const std::uint64_t from = firstBit + static_cast<std::uint64_t>(at[i]) - 1;
    const std::uint64_t to = firstBit + static_cast<std::uint64_t>(at[i + 1]) - 1;
    const std::uint64_t first = from / 64, last = to / 64;
    bits = (first == word ? bits : 0) | all >> from % 64;
    storeBits(bitmap + first * 8, end, bits);
    if (last > first + 1) [[unlikely]]
      std::memset(bitmap + (first + 1) * 8, 0xFF, (last - first - 1) * 8);
    bits = (last == first ? bits : all) & ~(all >> to % 64);
    storeBits(bitmap + last * 8, end, bits);
    word = last;
  }
}

}  // namespace

extern const G4RowKernels g4Rows;
const G4RowKernels g4Rows = {&findChanges, &codeRow, &decodeVerticals, &blacken};

#include "RegionEnd.h"
