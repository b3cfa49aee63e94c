// What every RowFilter does alike; the filters themselves say how three samples of a row combine and how the partials
// of three rows do. Included inside the region, after Vector.h.
//
// A filter F has
//   Lane               U8, or I16 for sums: then bytes are handled as two vectors, the even and the odd ones;
//   kKept              how many partials it keeps;
//   across(l, c, r, kept)          from a sample and its two neighbours;
//   down(above, current, below)    the result. Sums are clamped to 0..255 afterwards unless kWithinByte.

namespace {

// No vector is longer than 64 bytes.
[[gnu::always_inline]] inline I16 evenBytes(U8 v) { return (I16)((U16)v & splat<U16>(0xFF)); }
[[gnu::always_inline]] inline I16 oddBytes(U8 v) { return (I16)((U16)v >> 8); }

[[gnu::always_inline]] inline U8 interleave(I16 even, I16 odd) { return (U8)((U16)even | (U16)odd << 8); }

[[gnu::always_inline]] inline U8 interleaveClamped(I16 even, I16 odd) {
#if QAV_KERNEL_LEVEL >= 2
  const __m512i order = _mm512_broadcast_i32x4(_mm_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15));
  return (U8)_mm512_shuffle_epi8(_mm512_packus_epi16((__m512i)even, (__m512i)odd), order);
#elif QAV_KERNEL_LEVEL == 1
  const __m256i order =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15));
  return (U8)_mm256_shuffle_epi8(_mm256_packus_epi16((__m256i)even, (__m256i)odd), order);
#else
  const I16 most = splat<I16>(255);
  return interleave(max(min(even, most), I16{}), max(min(odd, most), I16{}));
#endif
}

template <class A, class B>
inline constexpr bool kSame = false;
template <class A>
inline constexpr bool kSame<A, A> = true;

template <class F>
inline constexpr bool kBytes = kSame<typename F::Lane, U8>;
template <class F>
inline constexpr std::size_t kPartialBytes = F::kKept*(kBytes<F> ? 1 : 2);

template <class F>
struct Partials {
  static constexpr int kCount = static_cast<int>(kPartialBytes<F>);
  typename F::Lane kept[kCount];

  [[gnu::always_inline]] static Partials of(const std::uint8_t* at, std::size_t stride) {
    Partials p;
    const U8 l = load<U8>(at - stride), c = load<U8>(at), r = load<U8>(at + stride);
    if constexpr (kBytes<F>) {
      F::across(l, c, r, p.kept);
    } else {
      F::across(evenBytes(l), evenBytes(c), evenBytes(r), p.kept);
      F::across(oddBytes(l), oddBytes(c), oddBytes(r), p.kept + F::kKept);
    }
    return p;
  }
  [[gnu::always_inline]] static Partials read(const std::uint8_t* from) {
    Partials p;
#pragma GCC unroll 8
    for (int k = 0; k < kCount; ++k)
      p.kept[k] = load<typename F::Lane>(from + static_cast<std::size_t>(k) * kVectorBytes);
    return p;
  }
  [[gnu::always_inline]] void write(std::uint8_t* to) const {
#pragma GCC unroll 8
    for (int k = 0; k < kCount; ++k) store(to + static_cast<std::size_t>(k) * kVectorBytes, kept[k]);
  }
};

template <class F>
[[gnu::always_inline]] inline U8 result(const Partials<F>& a, const Partials<F>& c, const Partials<F>& b) {
  if constexpr (kBytes<F>) {
    return F::down(a.kept, c.kept, b.kept);
  } else {
    const I16 even = F::down(a.kept, c.kept, b.kept);
    const I16 odd = F::down(a.kept + F::kKept, c.kept + F::kKept, b.kept + F::kKept);
    return F::kWithinByte ? interleave(even, odd) : interleaveClamped(even, odd);
  }
}

// A vector's worth of a row from sample `first` on, with its neighbours, for the ends of the row, where they do not all
// lie in the row.
struct EdgeWindow {
  EdgeWindow(const std::uint8_t* row, std::size_t first, std::size_t count, std::size_t stride) {
    std::uint8_t* const left = bytes + kMargin - stride;
    const std::size_t before = first == 0 ? 0 : stride;
    const std::size_t present = count - first + before;
    const std::size_t wanted = kVectorBytes + stride + before;
    if (before == 0) std::memcpy(left, row, stride);
    std::memcpy(left + stride - before, row + first - before, present < wanted ? present : wanted);
    if (present < wanted) std::memcpy(left + stride - before + present, row + count - stride, stride);
  }
  const std::uint8_t* at() const { return bytes + kMargin; }

  static constexpr std::size_t kMargin = 4;
  std::uint8_t bytes[kMargin + kVectorBytes + 2 * kMargin] = {};
};

// True when a whole vector from sample i on and its neighbours lie in the row.
[[gnu::always_inline]] inline bool inside(std::size_t i, std::size_t count, std::size_t stride) {
  return i >= stride && i + kVectorBytes + stride <= count;
}

template <class F>
void prepare(const std::uint8_t* row, std::size_t count, std::size_t stride, std::uint8_t* partials) {
  for (std::size_t i = 0; i < count; i += kVectorBytes) {
    std::uint8_t* const to = partials + i * kPartialBytes<F>;
    if (inside(i, count, stride))
      Partials<F>::of(row + i, stride).write(to);
    else
      Partials<F>::of(EdgeWindow(row, i, count, stride).at(), stride).write(to);
  }
}

template <class F>
[[gnu::always_inline]] inline U8 advanceVector(const std::uint8_t* at, std::size_t stride, const std::uint8_t* above,
                                               const std::uint8_t* current, std::uint8_t* below) {
  const Partials<F> a = Partials<F>::read(above);
  const Partials<F> b = Partials<F>::of(at, stride);
  b.write(below);
  return result<F>(a, Partials<F>::read(current), b);
}

template <class F>
void advance(const std::uint8_t* row, std::size_t count, std::size_t stride, const std::uint8_t* above,
             const std::uint8_t* current, std::uint8_t* below, std::uint8_t* out) {
  constexpr std::size_t size = kPartialBytes<F>;
  for (std::size_t i = 0; i < count; i += kVectorBytes) {
    for (; inside(i, count, stride); i += kVectorBytes)
      store(out + i, advanceVector<F>(row + i, stride, above + i * size, current + i * size, below + i * size));
    if (i >= count) return;
    const EdgeWindow edge(row, i, count, stride);
    const U8 v = advanceVector<F>(edge.at(), stride, above + i * size, current + i * size, below + i * size);
    std::memcpy(out + i, &v, count - i < kVectorBytes ? count - i : kVectorBytes);
  }
}

template <class F>
void finish(std::size_t count, const std::uint8_t* above, const std::uint8_t* current, std::uint8_t* out) {
  constexpr std::size_t size = kPartialBytes<F>;
  for (std::size_t i = 0; i < count; i += kVectorBytes) {
    const Partials<F> c = Partials<F>::read(current + i * size);
    const U8 v = result<F>(Partials<F>::read(above + i * size), c, c);
    std::memcpy(out + i, &v, count - i < kVectorBytes ? count - i : kVectorBytes);
  }
}

template <class F>
inline constexpr RowFilter kRowFilter = {kPartialBytes<F>, &prepare<F>, &advance<F>, &finish<F>};

}  // namespace
