// Source rows brought into the order in which a pass over rows sums them. Included inside the region,
// from the second level on.

namespace {

// A row pass works on as many rows as two vectors have 128-bit lanes, so that a weight is read once for both. They are
// first brought into groups of four pixels: in each lane of a group four reds, four greens, four blues and four alphas
// of one row. A group of the first rows stands beside that of the others. This is done for as many results as look at a
// span that a third of the first-level cache holds.
constexpr std::size_t kRowsOfVector = kVectorBytes / 16;
constexpr std::size_t kRows = 2 * kRowsOfVector;
constexpr std::size_t kGroupBytes = 2 * kVectorBytes;
constexpr std::size_t kBlock = 4;

// Groups are gathered a vector of each row at a time.
constexpr std::size_t kUnitPixels = 4 * kRowsOfVector;
constexpr std::size_t kUnitBytes = kRowsOfVector * kGroupBytes;
constexpr RowStretchShape kShape = {kBlock, kUnitPixels, 16384 / kUnitBytes, kUnitBytes};

[[gnu::always_inline]] inline U8 shuffleLanes(U8 v, __m128i order) {
#if QAV_KERNEL_LEVEL >= 2
  return (U8)_mm512_shuffle_epi8((__m512i)v, _mm512_broadcast_i32x4(order));
#else
  return (U8)_mm256_shuffle_epi8((__m256i)v, _mm256_broadcastsi128_si256(order));
#endif
}

// As many groups of one row as a vector has lanes, from memory that is readable for a whole vector.
template <int kChannels>
[[gnu::always_inline]] inline U8 groupsOfRow(const std::uint8_t* from) {
  const U8 bytes = load<U8>(from);
  if constexpr (kChannels == 4) return bytes;
#if QAV_KERNEL_LEVEL >= 2
  const __m512i order = _mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12);
  return (U8)_mm512_permutexvar_epi32(order, (__m512i)bytes);
#else
  return (U8)_mm256_permutevar8x32_epi32((__m256i)bytes, _mm256_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6));
#endif
}

// The samples of the four pixels in each lane, channel by channel.
template <int kChannels>
[[gnu::always_inline]] inline U8 inGroups(U8 pixels) {
  return shuffleLanes(pixels, kChannels == 4 ? _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15)
                                             : _mm_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1));
}

// Four pixels in each lane without the gaps behind their three channels.
[[gnu::always_inline]] inline U8 withoutGaps(U8 pixels) {
  return shuffleLanes(pixels, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
}

// Lane l of row r becomes lane r of vector l.
[[gnu::always_inline]] inline void transposeLanes(U8 (&rows)[kRowsOfVector]) {
#if QAV_KERNEL_LEVEL >= 2
  const auto a = (__m512i)rows[0], b = (__m512i)rows[1], c = (__m512i)rows[2], d = (__m512i)rows[3];
  const __m512i abLow = _mm512_shuffle_i32x4(a, b, 0x44), abHigh = _mm512_shuffle_i32x4(a, b, 0xEE);
  const __m512i cdLow = _mm512_shuffle_i32x4(c, d, 0x44), cdHigh = _mm512_shuffle_i32x4(c, d, 0xEE);
  rows[0] = (U8)_mm512_shuffle_i32x4(abLow, cdLow, 0x88);
  rows[1] = (U8)_mm512_shuffle_i32x4(abLow, cdLow, 0xDD);
  rows[2] = (U8)_mm512_shuffle_i32x4(abHigh, cdHigh, 0x88);
  rows[3] = (U8)_mm512_shuffle_i32x4(abHigh, cdHigh, 0xDD);
#else
  const auto a = (__m256i)rows[0], b = (__m256i)rows[1];
  rows[0] = (U8)_mm256_permute2x128_si256(a, b, 0x20);
  rows[1] = (U8)_mm256_permute2x128_si256(a, b, 0x31);
#endif
}

// The groups of a unit, in a vector of rows.
template <int kChannels>
[[gnu::always_inline]] inline void storeGroups(U8 (&lanes)[kRowsOfVector], std::uint8_t* groups) {
  transposeLanes(lanes);
#pragma GCC unroll 4
  for (std::size_t g = 0; g < kRowsOfVector; ++g) store(groups + g * kGroupBytes, inGroups<kChannels>(lanes[g]));
}

// A unit of rows that end within it, or of fewer rows than there are lanes for.
template <int kChannels>
[[gnu::noinline]] void gatherLastUnit(const SourceRows<std::uint8_t>& in, std::size_t unit, std::uint8_t* groups) {
  const std::size_t at = unit * kUnitPixels * kChannels, left = in.pixels * kChannels - at;
  const std::size_t here = left < kUnitPixels * kChannels ? left : kUnitPixels * kChannels;
  for (std::size_t first = 0; first < kRows; first += kRowsOfVector, groups += kVectorBytes) {
    U8 lanes[kRowsOfVector];
    for (std::size_t r = 0; r < kRowsOfVector; ++r) {
      std::uint8_t row[kVectorBytes] = {};
      std::memcpy(row, in.first + (first + r < in.count ? first + r : 0) * in.stride + at, here);
      lanes[r] = groupsOfRow<kChannels>(row);
    }
    storeGroups<kChannels>(lanes, groups);
  }
}

template <int kChannels>
void gatherGroups(const SourceRows<std::uint8_t>& in, const RowStretch& stretch, std::uint8_t* groups) {
  const std::size_t bytes = in.pixels * kChannels;
  for (std::size_t unit = stretch.source; unit < stretch.source + stretch.length; ++unit, groups += kUnitBytes) {
    const std::size_t at = unit * kUnitPixels * kChannels;
    if (in.count < kRows || at + kVectorBytes > bytes) [[unlikely]] {
      gatherLastUnit<kChannels>(in, unit, groups);
      continue;
    }
#pragma GCC unroll 2
    for (std::size_t half = 0; half < 2; ++half) {
      U8 lanes[kRowsOfVector];
#pragma GCC unroll 4
      for (std::size_t r = 0; r < kRowsOfVector; ++r)
        lanes[r] = groupsOfRow<kChannels>(in.first + (half * kRowsOfVector + r) * in.stride + at);
      storeGroups<kChannels>(lanes, groups + half * kVectorBytes);
    }
  }
}

// Gathered groups: `first` is the number of the one that stands at `bytes`.
struct Groups {
  const std::uint8_t* bytes;
  std::int32_t first;

  [[gnu::always_inline]] const std::uint8_t* at(std::int32_t group) const {
    return bytes + static_cast<std::ptrdiff_t>(group - first) * static_cast<std::ptrdiff_t>(kGroupBytes);
  }
  // Those of the second half of the rows.
  [[gnu::always_inline]] Groups ofSecondRows() const { return {bytes + kVectorBytes, first}; }
};

}  // namespace
