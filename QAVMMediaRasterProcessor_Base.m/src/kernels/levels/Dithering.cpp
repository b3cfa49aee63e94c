#include "kernels/Dithering.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

// Weights of the error by the number of steps until it is due, when every row runs `lag` columns behind the row above:
// to the right in the same row, in the next row, and in the row after it. Entry 0 is due after one step.
struct FloydSteinberg {
  static constexpr int scale = 16, lag = 3;
  static constexpr int own[2] = {7, 0};
  static constexpr int below[6] = {0, 3, 5, 1, 0, 0};
  static constexpr int farBelow[8] = {};
};
struct ShortRow {
  static constexpr int scale = 16, lag = 4;
  static constexpr int own[2] = {8, 0};
  static constexpr int below[6] = {1, 1, 2, 4, 0, 0};
  static constexpr int farBelow[8] = {};
};
struct Jarvis {
  static constexpr int scale = 48, lag = 3;
  static constexpr int own[2] = {7, 5};
  static constexpr int below[6] = {8, 0, 7, 5, 3, 0};
  static constexpr int farBelow[8] = {0, 0, 0, 4, 0, 5, 3, 1};
};
struct Stucki {
  static constexpr int scale = 42, lag = 3;
  static constexpr int own[2] = {8, 4};
  static constexpr int below[6] = {6, 0, 8, 4, 2, 0};
  static constexpr int farBelow[8] = {0, 0, 0, 3, 0, 4, 2, 1};
};

inline void add(std::int16_t& sum, int part) { sum = static_cast<std::int16_t>(sum + part); }

// Row by row. Three rows of sums with four spare columns on either side, where errors leave the picture.
template <class Method>
void diffuseRows(std::uint8_t* pixels, std::size_t width, std::size_t height, std::int16_t* scratch) {
  constexpr std::size_t spare = 4;
  const std::size_t stride = width + 2 * spare;
  std::int16_t* here = scratch + spare;
  std::int16_t* next = here + stride;
  std::int16_t* after = next + stride;
  for (std::size_t y = 0; y < height; ++y, pixels += width) {
    for (std::size_t x = 0; x < width; ++x) {
      const int sum = pixels[x] * Method::scale + here[x];
      const bool white = sum >= 128 * Method::scale;
      const int error = sum / Method::scale - (white ? 255 : 0);
      pixels[x] = white ? 255 : 0;
#pragma GCC unroll 2
      for (std::size_t k = 0; k < 2; ++k)
        if (Method::own[k]) add(here[x + 1 + k], error * Method::own[k]);
      std::int16_t* const below = next + x + 1 - Method::lag;
#pragma GCC unroll 6
      for (int k = 0; k < 6; ++k)
        if (Method::below[k]) add(below[k], error * Method::below[k]);
      std::int16_t* const farBelow = after + x + 1 - 2 * Method::lag;
#pragma GCC unroll 8
      for (int k = 0; k < 8; ++k)
        if (Method::farBelow[k]) add(farBelow[k], error * Method::farBelow[k]);
    }
    std::int16_t* const done = here;
    here = next;
    next = after;
    after = done;
    std::memset(after - spare, 0, stride * sizeof *after);
  }
}

#if QAV_KERNEL_LEVEL >= 1

// The rest of this file diffuses along a slanted front: one step advances as many rows as a vector has bytes by one
// pixel each, every row `lag` columns behind the row above, so that all that a pixel receives was computed in earlier
// steps. Even rows stand in one vector of 16-bit lanes, odd rows in another: what a row sends to the next stays in its
// lane or moves by one.

constexpr std::size_t kRows = kVectorBytes;
constexpr std::size_t kSteps = 16;

template <int weight>
[[gnu::always_inline]] inline I16 times(I16 v) {
  if constexpr (weight == 1) return v;
  if constexpr (weight == 2) return v + v;
  if constexpr (weight == 3) return (v << 1) + v;
  if constexpr (weight == 4) return v << 2;
  if constexpr (weight == 5) return (v << 2) + v;
  if constexpr (weight == 6) return (v << 2) + (v << 1);
  if constexpr (weight == 7) return (v << 3) - v;
  return v << 3;
}

// Errors on their way: the sums due in the next step, in the one after it, and so on.
template <class Method>
struct Pending {
  I16 own[3], below[7], farBelow[9];

  template <const int* weights, std::size_t k, std::size_t count>
  [[gnu::always_inline]] static void advance(I16* sums, I16 error) {
    if constexpr (k < count) {
      sums[k] = sums[k + 1];
      if constexpr (weights[k] != 0) sums[k] += times<weights[k]>(error);
      advance<weights, k + 1, count>(sums, error);
    }
  }
  [[gnu::always_inline]] void push(I16 error) {
    advance<Method::own, 0, 2>(own, error);
    advance<Method::below, 0, 6>(below, error);
    advance<Method::farBelow, 0, 8>(farBelow, error);
  }
};

struct Decision {
  I16 white;  // -1 or 0
  I16 error;
};

// The sums lie within +-18336, the errors within +-127. The quotients round toward zero.
template <class Method>
[[gnu::always_inline]] inline Decision decide(I16 sum) {
  // Shifts rather than comparisons and look-ups: every operation here delays the next step.
  const I16 negative = sum >> 15;
  const I16 white = (splat<I16>(128 * Method::scale - 1) - sum) >> 15;
  if constexpr (Method::scale == 16) return {white, ((sum + (negative & 15)) - (white & 4080)) >> 4};
  I16 quotient;
  if constexpr (Method::scale == 48) quotient = mulhi(sum, splat<I16>(10923)) >> 3;
  if constexpr (Method::scale == 42) quotient = mulhi(sum, splat<I16>(24967)) >> 4;
  return {white, quotient - (negative + (white & 255))};
}

// Moves every lane up by one. The top lane goes out to the next rows; lane 0 takes what the rows above sent.
[[gnu::always_inline]] inline I16 moveDown(I16 v, const std::int16_t* in, std::int16_t* out) {
#if QAV_KERNEL_LEVEL >= 2
  const __m512i rotation = _mm512_add_epi16(
      _mm512_set1_epi16(31), _mm512_set_epi16(31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, 14,
                                              13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
  const __m512i rotated = _mm512_permutexvar_epi16(rotation, (__m512i)v);
  const int top = _mm_cvtsi128_si32(_mm512_castsi512_si128(rotated));
  std::memcpy(out, &top, sizeof *out);
  return (I16)_mm512_mask_loadu_epi16(rotated, 1, in);
#else
  const __m256i swapped = _mm256_permute2x128_si256((__m256i)v, (__m256i)v, 1);
  const __m256i rotated = _mm256_alignr_epi8((__m256i)v, swapped, 14);
  *out = static_cast<std::int16_t>(_mm_cvtsi128_si32(_mm256_castsi256_si128(rotated)));
  return (I16)_mm256_insert_epi16(rotated, *in, 0);
#endif
}

// For a tile at the edge of the picture: from which of its steps to which each row is inside, even rows first.
struct Inside {
  alignas(64) std::int16_t from[2][kRows / 2];
  alignas(64) std::int16_t to[2][kRows / 2];

  [[gnu::always_inline]] I16 at(int parity, int step) const {
    const I16 now = splat<I16>(static_cast<std::int16_t>(step));
    return (load<I16>(from[parity]) <= now) & (now < load<I16>(to[parity]));
  }
  // Of a row's 16 pixels, those inside.
  unsigned bits(std::size_t row) const {
    return 0xFFFFu & (0xFFFFu << from[row % 2][row / 2]) & ~(0xFFFFu << to[row % 2][row / 2]);
  }
};

template <class Method>
struct Front {
  Pending<Method> even, odd;
  std::int16_t* sent;   // to the two rows behind this front's last, by step
  std::int16_t* sent2;  // a pixel's place in the row sent is read kRows * lag steps later than it is written

  // One step. `pixels` holds a byte for each row and becomes 255 or 0.
  template <bool edge>
  [[gnu::always_inline]] void step(U8& pixels, std::size_t at, int number, const Inside& inside) {
    constexpr std::size_t delay = kRows * Method::lag;
    I16 toEven = odd.below[0], toOdd = even.below[0];
    if constexpr (Method::farBelow[3] != 0) {
      toEven += even.farBelow[0];
      toOdd += moveDown(odd.farBelow[0], sent2 + at + delay, sent2 + at);
    }
    toEven = moveDown(toEven, sent + at + delay, sent + at);
    const I16 both = (I16)pixels;
    const I16 scale = splat<I16>(Method::scale);
    const I16 evenSum = ((both & 255) * scale + toEven) + even.own[0];
    const I16 oddSum = ((I16)((U16)both >> 8) * scale + toOdd) + odd.own[0];
    Decision e = decide<Method>(evenSum), o = decide<Method>(oddSum);
    if constexpr (edge) {
      e.error &= inside.at(0, number);
      o.error &= inside.at(1, number);
    }
    even.push(e.error);
    odd.push(o.error);
    pixels = (U8)((e.white & 255) | (o.white << 8));
  }
};

// 16 bytes of each of kRows rows: lane q of row i holds those of row 16 q + i.
struct Tile {
  U8 rows[kSteps];

  // Turns 16 pixels of every row into every row's pixel of 16 steps, and back.
  void transpose() {
#pragma GCC unroll 4
    for (int round = 0; round < 4; ++round) {
      U8 mixed[16];
#pragma GCC unroll 8
      for (int i = 0; i < 8; ++i) {
#if QAV_KERNEL_LEVEL >= 2
        mixed[2 * i] = (U8)_mm512_unpacklo_epi8((__m512i)rows[i], (__m512i)rows[i + 8]);
        mixed[2 * i + 1] = (U8)_mm512_unpackhi_epi8((__m512i)rows[i], (__m512i)rows[i + 8]);
#else
        mixed[2 * i] = (U8)_mm256_unpacklo_epi8((__m256i)rows[i], (__m256i)rows[i + 8]);
        mixed[2 * i + 1] = (U8)_mm256_unpackhi_epi8((__m256i)rows[i], (__m256i)rows[i + 8]);
#endif
      }
#pragma GCC unroll 16
      for (int i = 0; i < 16; ++i) rows[i] = mixed[i];
    }
  }
};

// The part of a picture that one front works on: up to kRows rows.
template <class Method>
struct Band {
  std::uint8_t* pixels;
  std::ptrdiff_t width;
  std::size_t rows;

  std::uint8_t* place(std::size_t row, std::ptrdiff_t step) const {
    return pixels + step + static_cast<std::ptrdiff_t>(row) * (width - Method::lag);
  }
  // Whether there are all rows, and 16 steps stay inside the picture in each.
  bool isInside(std::ptrdiff_t step) const {
    return rows == kRows && step >= static_cast<std::ptrdiff_t>(kRows - 1) * Method::lag &&
           step + static_cast<std::ptrdiff_t>(kSteps) <= width;
  }
  Inside inside(std::ptrdiff_t step) const {
    // Beyond the slant of the front only the sign counts.
    constexpr std::ptrdiff_t far = 1000;
    const std::ptrdiff_t left = width - step;
    const auto begun = splat<I16>(static_cast<std::int16_t>(step < far ? step : far));
    const auto rest = splat<I16>(static_cast<std::int16_t>(left < -far ? -far : left < far ? left : far));
    const auto steps = splat<I16>(kSteps);
    Inside result;
    for (std::int16_t parity = 0; parity < 2; ++parity) {
      I16 row;
      for (std::size_t lane = 0; lane < kLanes<I16>; ++lane) row[lane] = static_cast<std::int16_t>(2 * lane);
      row += splat<I16>(parity);
      const I16 behind = row * splat<I16>(Method::lag);
      const I16 to = max(min(behind + rest, steps), I16{}) & (row < splat<I16>(static_cast<std::int16_t>(rows)));
      store(result.from[parity], max(min(behind - begun, steps), I16{}));
      store(result.to[parity], to);
    }
    return result;
  }
};

#if QAV_KERNEL_LEVEL >= 2
[[gnu::always_inline]] inline __m128i loadBits(const std::uint8_t* from, unsigned bits) {
  return _mm_maskz_loadu_epi8(static_cast<__mmask16>(bits), from);
}
[[gnu::always_inline]] inline void storeBits(std::uint8_t* to, unsigned bits, __m128i v) {
  _mm_mask_storeu_epi8(to, static_cast<__mmask16>(bits), v);
}
#else
inline __m128i loadBits(const std::uint8_t* from, unsigned bits) {
  if (bits == 0xFFFF) return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  alignas(16) std::uint8_t bytes[16] = {};
  for (; bits; bits &= bits - 1) bytes[__builtin_ctz(bits)] = from[__builtin_ctz(bits)];
  return _mm_load_si128(reinterpret_cast<const __m128i*>(bytes));
}
inline void storeBits(std::uint8_t* to, unsigned bits, __m128i v) {
  if (bits == 0xFFFF) return _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v);
  alignas(16) std::uint8_t bytes[16];
  _mm_store_si128(reinterpret_cast<__m128i*>(bytes), v);
  for (; bits; bits &= bits - 1) to[__builtin_ctz(bits)] = bytes[__builtin_ctz(bits)];
}
#endif

// Puts together, or takes apart, the 16-byte lanes of a vector.
template <class Read>
[[gnu::always_inline]] inline U8 gather(Read read) {
#if QAV_KERNEL_LEVEL >= 2
  __m512i v = _mm512_castsi128_si512(read(0));
  v = _mm512_inserti32x4(v, read(1), 1);
  v = _mm512_inserti32x4(v, read(2), 2);
  return (U8)_mm512_inserti32x4(v, read(3), 3);
#else
  return (U8)_mm256_inserti128_si256(_mm256_castsi128_si256(read(0)), read(1), 1);
#endif
}
template <class Write>
[[gnu::always_inline]] inline void scatter(U8 v, Write write) {
#if QAV_KERNEL_LEVEL >= 2
  write(0, _mm512_castsi512_si128((__m512i)v));
  write(1, _mm512_extracti32x4_epi32((__m512i)v, 1));
  write(2, _mm512_extracti32x4_epi32((__m512i)v, 2));
  write(3, _mm512_extracti32x4_epi32((__m512i)v, 3));
#else
  write(0, _mm256_castsi256_si128((__m256i)v));
  write(1, _mm256_extracti128_si256((__m256i)v, 1));
#endif
}

template <bool edge, class Method>
Tile readTile(const Band<Method>& band, std::ptrdiff_t step, const Inside& inside) {
  Tile tile;
  for (std::size_t i = 0; i < 16; ++i) {
    tile.rows[i] = gather([&](std::size_t q) {
      const std::uint8_t* const from = band.place(16 * q + i, step);
      if constexpr (edge) return loadBits(from, inside.bits(16 * q + i));
      return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    });
  }
  return tile;
}

template <bool edge, class Method>
void writeTile(const Band<Method>& band, std::ptrdiff_t step, const Inside& inside, const Tile& tile) {
  for (std::size_t i = 0; i < 16; ++i) {
    scatter(tile.rows[i], [&](std::size_t q, __m128i v) {
      std::uint8_t* const to = band.place(16 * q + i, step);
      if constexpr (edge)
        storeBits(to, inside.bits(16 * q + i), v);
      else
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v);
    });
  }
}

template <bool edge, class Method>
void advanceTile(Front<Method>& state, const Band<Method>& band, std::ptrdiff_t step) {
  Inside inside;
  if constexpr (edge) inside = band.inside(step);
  Tile tile = readTile<edge>(band, step, inside);
  tile.transpose();
  Front<Method> front = state;
  const auto first = static_cast<std::size_t>(step);
  for (std::size_t i = 0; i < kSteps; ++i)
    front.template step<edge>(tile.rows[i], first + i, static_cast<int>(i), inside);
  state = front;
  tile.transpose();
  writeTile<edge>(band, step, inside, tile);
}

template <class Method>
void diffuseFront(std::uint8_t* pixels, std::size_t width, std::size_t height, std::int16_t* scratch) {
  constexpr std::size_t delay = kRows * Method::lag;
  for (std::size_t y = 0; y < height; y += kRows) {
    const std::size_t rows = height - y < kRows ? height - y : kRows;
    const Band<Method> band{pixels + y * width, static_cast<std::ptrdiff_t>(width), rows};
    Front<Method> front{};
    front.sent = scratch;
    front.sent2 = scratch + width + 2 * delay + 2 * kSteps;
    // What the last row sends to the rows of the next band is complete that much later.
    const std::size_t steps = width + (y + rows < height ? delay + Method::lag : (rows - 1) * Method::lag);
    for (std::size_t step = 0; step < steps; step += kSteps) {
      const auto at = static_cast<std::ptrdiff_t>(step);
      if (band.isInside(at))
        advanceTile<false>(front, band, at);
      else
        advanceTile<true>(front, band, at);
    }
  }
}

#endif

template <class Method>
void diffuse(std::uint8_t* pixels, std::size_t width, std::size_t height, std::int16_t* scratch) {
#if QAV_KERNEL_LEVEL >= 1
  // A front of one or two rows, or one whose slant is much longer than a row, is slower than the rows themselves.
  if (height > 2 && width > 4) return diffuseFront<Method>(pixels, width, height, scratch);
#endif
  diffuseRows<Method>(pixels, width, height, scratch);
}

void threshold(std::uint8_t* bytes, std::size_t count, std::uint8_t level) {
  for (std::size_t i = 0; i < count; ++i) bytes[i] = bytes[i] > level ? 255 : 0;
}

}  // namespace

extern const DitheringKernels dithering;
const DitheringKernels dithering = {{&diffuse<FloydSteinberg>, &diffuse<ShortRow>, &diffuse<Jarvis>, &diffuse<Stucki>},
                                    &threshold};

#include "RegionEnd.h"
