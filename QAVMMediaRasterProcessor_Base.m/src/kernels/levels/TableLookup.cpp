#include "kernels/TableLookup.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

// A table in registers. At every level but the first, `operator()` maps a whole vector of bytes.
#if QAV_KERNEL_LEVEL >= 3
struct Table {
  explicit Table(const std::uint8_t* t)
      : a(_mm512_loadu_si512(t)),
        b(_mm512_loadu_si512(t + 64)),
        c(_mm512_loadu_si512(t + 128)),
        d(_mm512_loadu_si512(t + 192)) {}
  [[gnu::always_inline]] U8 operator()(U8 v) const {
    const __m512i index = (__m512i)v;
    const __m512i low = _mm512_permutex2var_epi8(a, index, b);
    const __m512i high = _mm512_permutex2var_epi8(c, index, d);
    return (U8)_mm512_mask_mov_epi8(low, _mm512_movepi8_mask(index), high);
  }
  __m512i a, b, c, d;
};
#elif QAV_KERNEL_LEVEL >= 1
// Sixteen 16-byte look-ups, each on the index less 16 times its number. A look-up gives 0 once its index has gone
// below zero, and every index that is not yet in range gives the entry modulo 16; so with row n holding the
// exclusive-or of rows n and n - 1 the sum of all look-ups is the entry itself.
struct Table {
  explicit Table(const std::uint8_t* t) {
    std::uint8_t delta[256];
    for (int i = 0; i < 256; ++i) {
      const int row = i / 16;
      // Index bytes of 128 and more look up nothing until enough has been subtracted, so the halves are separate.
      delta[i] = row == 0 || row == 8 ? t[i] : static_cast<std::uint8_t>(t[i] ^ t[i - 16]);
    }
    for (int row = 0; row < 16; ++row) {
      const __m128i entries = _mm_loadu_si128(reinterpret_cast<const __m128i*>(delta + 16 * row));
#if QAV_KERNEL_LEVEL >= 2
      rows[row] = (U8)_mm512_broadcast_i32x4(entries);
#else
      rows[row] = (U8)_mm256_broadcastsi128_si256(entries);
#endif
    }
  }
  [[gnu::always_inline]] static U8 shuffle(U8 entries, U8 index) {
#if QAV_KERNEL_LEVEL >= 2
    return (U8)_mm512_shuffle_epi8((__m512i)entries, (__m512i)index);
#else
    return (U8)_mm256_shuffle_epi8((__m256i)entries, (__m256i)index);
#endif
  }
  [[gnu::always_inline]] U8 operator()(U8 v) const {
    const U8 step = splat<U8>(16);
    U8 index = v;
    U8 upper = v ^ splat<U8>(0x80);
    U8 result = shuffle(rows[0], index) ^ shuffle(rows[8], upper);
    for (int row = 1; row < 8; ++row) {
      // Saturation keeps what has fallen below zero, and the other half, there.
      index = (U8)subs((I8)index, (I8)step);
      upper = (U8)subs((I8)upper, (I8)step);
      result ^= shuffle(rows[row], index) ^ shuffle(rows[row + 8], upper);
    }
    return result;
  }
  [[gnu::always_inline]] static I8 subs(I8 a, I8 b) {
#if QAV_KERNEL_LEVEL >= 2
    return (I8)_mm512_subs_epi8((__m512i)a, (__m512i)b);
#else
    return (I8)_mm256_subs_epi8((__m256i)a, (__m256i)b);
#endif
  }
  U8 rows[16];
};
#endif

void mapBytes(std::uint8_t* bytes, std::size_t count, const std::uint8_t* table) {
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 1
  if (count >= 4 * kVectorBytes) {
    const Table map(table);
    for (; i + 2 * kVectorBytes <= count; i += 2 * kVectorBytes) {
      prefetchPageAhead(bytes + i);
      prefetchPageAhead(bytes + i + kVectorBytes);
      const U8 first = map(load<U8>(bytes + i));
      const U8 second = map(load<U8>(bytes + i + kVectorBytes));
      store(bytes + i, first);
      store(bytes + i + kVectorBytes, second);
    }
  }
#endif
  for (; i < count; ++i) bytes[i] = table[bytes[i]];
}

// Bytes 255 where the channel of a byte is selected. Pixels of 2 and 4 bytes fall the same way in every vector, pixels
// of 3 bytes in one of three ways by turns.
struct ChannelMasks {
  ChannelMasks(int channels, unsigned selected) {
    for (int v = 0; v < 3; ++v) {
      for (std::size_t i = 0; i < kVectorBytes; ++i) {
        const std::size_t channel =
            (static_cast<std::size_t>(v) * kVectorBytes + i) % static_cast<std::size_t>(channels);
        mask[v][i] = (selected >> channel & 1u) ? 255 : 0;
      }
    }
  }
  U8 mask[3];
};

void mapSelectedPlain(std::uint8_t* bytes, std::size_t count, int channels, unsigned selected,
                      const std::uint8_t* table) {
  for (int k = 0; k < channels; ++k) {
    if (!(selected >> k & 1u)) continue;
    for (std::size_t i = static_cast<std::size_t>(k); i < count; i += static_cast<std::size_t>(channels))
      bytes[i] = table[bytes[i]];
  }
}

void mapSelected(std::uint8_t* bytes, std::size_t pixels, int channels, unsigned selected, const std::uint8_t* table) {
  const std::size_t count = pixels * static_cast<std::size_t>(channels);
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 1
  if (count >= 4 * kVectorBytes) {
    const Table map(table);
    const ChannelMasks masks(channels, selected);
    const std::size_t phases = channels == 3 ? 3 : 1;
    for (; i + phases * kVectorBytes <= count; i += phases * kVectorBytes) {
      for (std::size_t v = 0; v < phases; ++v) {
        std::uint8_t* const at = bytes + i + v * kVectorBytes;
        prefetchPageAhead(at);
        const U8 old = load<U8>(at);
        store(at, (map(old) & masks.mask[v]) | (old & ~masks.mask[v]));
      }
    }
  }
#endif
  mapSelectedPlain(bytes + i, count - i, channels, selected, table);
}

#if QAV_KERNEL_LEVEL >= 3
template <int channels>
std::size_t mapEachVectors(std::uint8_t* bytes, std::size_t count, const std::uint8_t* const* tables) {
  static constexpr std::uint8_t unused[256] = {};
  const auto map = [&](int k) { return Table(k < channels && tables[k] ? tables[k] : unused); };
  const auto mask = [&](int k) { return ChannelMasks(channels, k < channels && tables[k] ? 1u << k : 0u); };
  const Table maps[4] = {map(0), map(1), map(2), map(3)};
  const ChannelMasks masks[4] = {mask(0), mask(1), mask(2), mask(3)};
  constexpr std::size_t phases = channels == 3 ? 3 : 1;
  std::size_t i = 0;
  for (; i + phases * kVectorBytes <= count; i += phases * kVectorBytes) {
#pragma GCC unroll 3
    for (std::size_t v = 0; v < phases; ++v) {
      prefetchPageAhead(bytes + i + v * kVectorBytes);
      const U8 old = load<U8>(bytes + i + v * kVectorBytes);
      U8 result = old;
#pragma GCC unroll 4
      for (int k = 0; k < channels; ++k) result = (maps[k](old) & masks[k].mask[v]) | (result & ~masks[k].mask[v]);
      store(bytes + i + v * kVectorBytes, result);
    }
  }
  return i;
}
#endif

void mapEach(std::uint8_t* bytes, std::size_t pixels, int channels, const std::uint8_t* const* tables) {
  const std::size_t count = pixels * static_cast<std::size_t>(channels);
  std::size_t i = 0;
#if QAV_KERNEL_LEVEL >= 3
  if (count >= 4 * kVectorBytes)
    i = channels == 2   ? mapEachVectors<2>(bytes, count, tables)
        : channels == 3 ? mapEachVectors<3>(bytes, count, tables)
                        : mapEachVectors<4>(bytes, count, tables);
#endif
  for (int k = 0; k < channels; ++k)
    if (tables[k]) mapSelectedPlain(bytes + i, count - i, channels, 1u << k, tables[k]);
}

}  // namespace

extern const TableLookupKernels tableLookup;
const TableLookupKernels tableLookup = {&mapBytes, &mapSelected, &mapEach};

#include "RegionEnd.h"
