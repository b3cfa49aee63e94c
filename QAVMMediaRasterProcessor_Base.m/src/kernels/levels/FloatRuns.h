// Positions that take turns. Included inside the region, behind FloatSums.h, from the second level on.

namespace {

// A run's sums as they go through the source: source.read(v) is vector v of a source position, source.next() goes on
// to the next one, and target.store(x, v, sum) takes a result.
template <std::size_t kSlots, std::size_t kCount, bool kExact, class Source, class Target>
class RunningSums {
 public:
  [[gnu::always_inline]] RunningSums(const FloatRun& run, const Source& source, const Target& target)
      : source_(source), target_(target), at_(run.source), weights_(run.weights), turn_(run.turns) {}

  // The next position of each slot; those of the run are counted from 0.
  [[gnu::always_inline]] void completeAll(std::size_t x) { completeEach(x, std::make_index_sequence<kSlots>()); }

  // Whether all results were finite, and with them all samples: otherwise they do not count.
  bool allFinite() const {
    bool finite = true;
    for (std::size_t i = 0; i < kDoubles; ++i) finite = finite && notFinite_[i] == 0.0;
    return finite;
  }

 private:
  template <std::size_t... kSlot>
  [[gnu::always_inline]] void completeEach(std::size_t x, std::index_sequence<kSlot...>) {
    (complete<kSlot>(x + kSlot), ...);
  }

  template <std::size_t kSlot>
  [[gnu::always_inline]] void complete(std::size_t x) {
    constexpr std::size_t kMiddle = (kSlot + kSlots / 2 - 1) % kSlots;
    addUpTo<kMiddle, kMiddle + 1>(turn_->lone);
    addUpTo<0, kSlots>(turn_->behind);
    ++turn_;
#pragma GCC unroll 4
    for (std::size_t v = 0; v < kCount; ++v) {
      F64& sum = sums_[kSlot][v];
      target_.store(x, v, sum);
      notFinite_ = timesPlus(sum, F64{}, notFinite_);
      sum = F64{};
    }
  }

  template <std::size_t kFrom, std::size_t kTo>
  [[gnu::always_inline]] void addUpTo(std::int32_t behind) {
    for (; at_ < behind; ++at_, source_.next(), weights_ += kSlots) {
      F64 weights[kTo];
#pragma GCC unroll 8
      for (std::size_t o = kFrom; o < kTo; ++o) weights[o] = splat<F64>(weights_[o]);
      addPosition<kExact, kFrom, kTo>(weights, source_, sums_);
    }
  }

  Source source_;
  Target target_;
  std::int32_t at_;
  const double* weights_;
  const FloatTurn* turn_;
  Sums<kSlots, kCount> sums_ = {};
  F64 notFinite_ = {};
};

// As many vectors of each slot as the registers hold.
template <std::size_t kSlots>
constexpr std::size_t kSlotVectors = QAV_KERNEL_LEVEL >= 2 ? (kSlots <= 4 ? 4 : 2) : (kSlots <= 4 ? 2 : 1);

template <std::size_t kSlots, bool kExact>
struct Shape {};

// Calls body for the run's slots and the exactness of its products.
template <class Body>
auto atShapeOf(const FloatRun& run, Body body) {
  switch (run.slots) {
    case 2:
      return run.exact ? body(Shape<2, true>()) : body(Shape<2, false>());
    case 3:
      return run.exact ? body(Shape<3, true>()) : body(Shape<3, false>());
    case 4:
      return run.exact ? body(Shape<4, true>()) : body(Shape<4, false>());
    case 6:
      return run.exact ? body(Shape<6, true>()) : body(Shape<6, false>());
    default:
      return run.exact ? body(Shape<8, true>()) : body(Shape<8, false>());
  }
}

}  // namespace
