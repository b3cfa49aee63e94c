// What every RowFilter does alike; the filters themselves say how three samples of a row combine and how the partials
// of three rows do. Included inside the region, after Vector.h.
//
// A filter F has
//   Lane         U8, or I16 for sums: then bytes are handled as two vectors, the even and the odd ones;
//   kKept        how many partials it keeps;
//   across(l, c, r, above, kept)                 combines a sample with its neighbours, given the one above it;
//   down(above, current, below, centre, south)   makes the result from the partials of three rows, the sample itself
//                                                and the one below it.
// Sums are clamped to 0..255 afterwards unless kWithinByte.

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

// A sample's left neighbour, itself and its right neighbour, for a vector of samples.
struct Taps {
  U8 l, c, r;
};

// Keeps a value in a register: the compiler would rather read it from memory again for every use, and reads that cross
// cache lines are what limits these loops.
[[gnu::always_inline]] inline U8 inRegister(U8 v) {
#if QAV_KERNEL_LEVEL >= 2
  __asm__("" : "+v"(v));
#elif QAV_KERNEL_LEVEL == 1
  __asm__("" : "+x"(v));
#endif
  return v;
}

[[gnu::always_inline]] inline Taps tapsAt(const std::uint8_t* at, std::size_t stride) {
  return {inRegister(load<U8>(at - stride)), inRegister(load<U8>(at)), inRegister(load<U8>(at + stride))};
}

// Lanes `from` to `to` of a vector, which may lie beyond its ends.
struct LaneRange {
  std::ptrdiff_t from, to;

  bool empty() const { return from >= to; }
  std::size_t size() const { return static_cast<std::size_t>(to - from); }
#if QAV_KERNEL_LEVEL >= 2
  static std::uint64_t below(std::ptrdiff_t lane) {
    return lane <= 0 ? 0 : lane >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << lane) - 1;
  }
  __mmask64 mask() const { return below(to) & ~below(from); }
#endif
};

[[gnu::always_inline]] inline LaneRange clipped(std::ptrdiff_t from, std::ptrdiff_t to) {
  constexpr auto lanes = static_cast<std::ptrdiff_t>(kVectorBytes);
  return {from < 0 ? 0 : from, to > lanes ? lanes : to};
}

// Reads some lanes only; the others are those of `otherwise`.
[[gnu::always_inline]] inline U8 loadLanes(const std::uint8_t* at, LaneRange range, U8 otherwise) {
#if QAV_KERNEL_LEVEL >= 2
  return (U8)_mm512_mask_loadu_epi8((__m512i)otherwise, range.mask(), at);
#else
  if (!range.empty())
    std::memcpy(reinterpret_cast<std::uint8_t*>(&otherwise) + range.from, at + range.from, range.size());
  return otherwise;
#endif
}

[[gnu::always_inline]] inline void storeLanes(std::uint8_t* at, LaneRange range, U8 v) {
#if QAV_KERNEL_LEVEL >= 2
  _mm512_mask_storeu_epi8(at, range.mask(), (__m512i)v);
#else
  if (!range.empty())
    std::memcpy(at + range.from, reinterpret_cast<const std::uint8_t*>(&v) + range.from, range.size());
#endif
}

// Where a row's vectors stand. The first one may begin before the row, and the last one end behind it.
class Position {
 public:
  explicit Position(const RowShape& shape)
      : count_(static_cast<std::ptrdiff_t>(shape.count)),
        stride_(static_cast<std::ptrdiff_t>(shape.stride)),
        lastInside_(count_ - stride_ - kStep),
        i(-static_cast<std::ptrdiff_t>(shape.lead)) {}

  bool inRow() const { return i < count_; }
  // True when the whole vector and its neighbours lie in the row.
  bool inside() const { return i >= stride_ && i <= lastInside_; }
  // True when the vector after this one lies wholly in the row.
  bool nextInRow() const { return i <= count_ - 2 * kStep; }
  void next() { i += kStep; }
  LaneRange lanes() const { return clipped(-i, count_ - i); }

  Taps edgeTaps(const std::uint8_t* row) const {
    const LaneRange present = lanes();
    const U8 c = loadLanes(row + i, present, U8{});
    const U8 l = loadLanes(row + i - stride_, clipped(stride_ - i, present.to), c);
    const U8 r = loadLanes(row + i + stride_, clipped(present.from, count_ - stride_ - i), c);
    return {l, c, r};
  }

 private:
  static constexpr auto kStep = static_cast<std::ptrdiff_t>(kVectorBytes);
  std::ptrdiff_t count_;
  std::ptrdiff_t stride_;
  std::ptrdiff_t lastInside_;

 public:
  std::ptrdiff_t i;  // of the vector's first lane
};

template <class F>
struct Partials {
  static constexpr int kCount = static_cast<int>(kPartialBytes<F>);
  static constexpr std::size_t kSize = kPartialBytes<F> * kVectorBytes;
  typename F::Lane kept[kCount];

  [[gnu::always_inline]] static Partials of(const Taps& taps, U8 above) {
    Partials p;
    if constexpr (kBytes<F>) {
      F::across(taps.l, taps.c, taps.r, above, p.kept);
    } else {
      F::across(evenBytes(taps.l), evenBytes(taps.c), evenBytes(taps.r), evenBytes(above), p.kept);
      F::across(oddBytes(taps.l), oddBytes(taps.c), oddBytes(taps.r), oddBytes(above), p.kept + F::kKept);
    }
    return p;
  }
  [[gnu::always_inline]] static Partials read(const std::uint8_t* from) {
    Partials p;
#pragma GCC unroll 8
    for (int k = 0; k < kCount; ++k)
      p.kept[k] = (typename F::Lane)inRegister(load<U8>(from + static_cast<std::size_t>(k) * kVectorBytes));
    return p;
  }
  [[gnu::always_inline]] void write(std::uint8_t* to) const {
#pragma GCC unroll 8
    for (int k = 0; k < kCount; ++k) store(to + static_cast<std::size_t>(k) * kVectorBytes, kept[k]);
  }
};

template <class F>
[[gnu::always_inline]] inline U8 result(const Partials<F>& a, const Partials<F>& c, const Partials<F>& b, U8 centre,
                                        U8 south) {
  if constexpr (kBytes<F>) {
    return F::down(a.kept, c.kept, b.kept, centre, south);
  } else {
    const I16 even = F::down(a.kept, c.kept, b.kept, evenBytes(centre), evenBytes(south));
    const I16 odd = F::down(a.kept + F::kKept, c.kept + F::kKept, b.kept + F::kKept, oddBytes(centre), oddBytes(south));
    return F::kWithinByte ? interleave(even, odd) : interleaveClamped(even, odd);
  }
}

template <class F>
void prepare(const std::uint8_t* row, const RowShape& shape, std::uint8_t* partials) {
  for (Position at(shape); at.inRow(); at.next(), partials += Partials<F>::kSize) {
    const Taps taps = at.inside() ? tapsAt(row + at.i, shape.stride) : at.edgeTaps(row);
    Partials<F>::of(taps, taps.c).write(partials);
  }
}

template <class F>
[[gnu::always_inline]] inline U8 advanceVector(const Taps& taps, U8 centre, const std::uint8_t* above,
                                               const std::uint8_t* current, std::uint8_t* below) {
  const Partials<F> a = Partials<F>::read(above);
  const Partials<F> b = Partials<F>::of(taps, centre);
  b.write(below);
  return result<F>(a, Partials<F>::read(current), b, centre, taps.c);
}

// One row's way through a filter.
template <class F>
class Advance {
 public:
  Advance(const std::uint8_t* row, const RowShape& shape, const std::uint8_t* above, const std::uint8_t* current,
          std::uint8_t* below, std::uint8_t* out)
      : row_(row), above_(above), current_(current), below_(below), out_(out), stride_(shape.stride), at_(shape) {}

  // Everything is inlined, so that the members live in registers: a byte that is stored might be one of theirs.
  [[gnu::always_inline]] void run() {
    if (at_.inRow() && !at_.inside()) edge();
#if QAV_KERNEL_LEVEL >= 3
    if constexpr (kBytes<F>) rolling();
#endif
    for (; at_.inside(); next()) whole(tapsAt(row_ + at_.i, stride_));
    while (at_.inRow()) edge();
  }

 private:
  [[gnu::always_inline]] void next() {
    at_.next();
    slot_ += Partials<F>::kSize;
  }
  [[gnu::always_inline]] U8 result(const Taps& taps, U8 centre) {
    return advanceVector<F>(taps, centre, above_ + slot_, current_ + slot_, below_ + slot_);
  }
  [[gnu::always_inline]] void whole(const Taps& taps) {
    prefetchPageAhead(row_ + at_.i);
    store(out_ + at_.i, result(taps, inRegister(load<U8>(out_ + at_.i))));
  }
  [[gnu::always_inline]] void edge() {
    const U8 centre = loadLanes(out_ + at_.i, at_.lanes(), U8{});
    storeLanes(out_ + at_.i, at_.lanes(), result(at_.edgeTaps(row_), centre));
    next();
  }
#if QAV_KERNEL_LEVEL >= 3
  // Reads every vector once and takes the neighbours from it and the vectors beside it. Filters with sums are no
  // faster that way: they permute bytes enough as it is.
  [[gnu::always_inline]] void rolling() {
    if (!at_.inside() || !at_.nextInRow()) return;
    U8 lane;
    for (std::size_t i = 0; i < kVectorBytes; ++i) lane[i] = static_cast<std::uint8_t>(i);
    const auto stride = static_cast<std::uint8_t>(stride_);
    const __m512i leftwards = (__m512i)(lane + splat<U8>(static_cast<std::uint8_t>(kVectorBytes - stride)));
    const __m512i rightwards = (__m512i)(lane + splat<U8>(stride));
    // What comes before the row is the end of the row above.
    U8 before = load<U8>(row_ + at_.i - kVectorBytes), here = load<U8>(row_ + at_.i);
    for (; at_.nextInRow(); next()) {
      const U8 after = load<U8>(row_ + at_.i + kVectorBytes);
      whole({(U8)_mm512_permutex2var_epi8((__m512i)before, leftwards, (__m512i)here), here,
             (U8)_mm512_permutex2var_epi8((__m512i)here, rightwards, (__m512i)after)});
      before = here;
      here = after;
    }
  }
#endif

  const std::uint8_t* row_;
  const std::uint8_t* above_;
  const std::uint8_t* current_;
  std::uint8_t* below_;
  std::uint8_t* out_;
  std::size_t stride_;
  std::size_t slot_ = 0;
  Position at_;
};

template <class F>
void advance(const std::uint8_t* row, const RowShape& shape, const std::uint8_t* above, const std::uint8_t* current,
             std::uint8_t* below, std::uint8_t* out) {
  Advance<F>(row, shape, above, current, below, out).run();
}

template <class F>
void finish(const RowShape& shape, const std::uint8_t* above, const std::uint8_t* current, std::uint8_t* out) {
  std::size_t slot = 0;
  for (Position at(shape); at.inRow(); at.next(), slot += Partials<F>::kSize) {
    const Partials<F> c = Partials<F>::read(current + slot);
    const U8 centre = loadLanes(out + at.i, at.lanes(), U8{});
    storeLanes(out + at.i, at.lanes(), result<F>(Partials<F>::read(above + slot), c, c, centre, centre));
  }
}

template <class F>
inline constexpr RowFilter kRowFilter = {kPartialBytes<F>, &prepare<F>, &advance<F>, &finish<F>};

}  // namespace
