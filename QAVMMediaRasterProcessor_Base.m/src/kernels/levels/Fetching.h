// Included inside the region, behind RegionBegin.h.

namespace {

constexpr std::size_t kFetchedLine = 64;

// Calls a line into the second-level cache; one outside of any buffer does no harm.
[[gnu::always_inline]] inline void fetchLine(std::uintptr_t at) {
  constexpr int kReading = 0, kSecondLevel = 2;
  __builtin_prefetch(reinterpret_cast<const void*>(at), kReading, kSecondLevel);
}

// Calls memory into the second-level cache, in even portions while there is something else to do. Small ones: many
// lines at once take the places of the misses that the work waits for.
class Fetching {
 public:
  template <class Sample>
  Fetching(const Sample* from, std::size_t samples, std::size_t portions)
      : at_(reinterpret_cast<std::uintptr_t>(from)),
        left_(samples * sizeof(Sample)),
        portion_((left_ + portions - 1) / portions) {}

  [[gnu::always_inline]] void portion(std::size_t count = 1) {
    const std::size_t wanted = count * portion_, now = wanted < left_ ? wanted : left_;
    due_ += now;
    left_ -= now;
    for (; due_ >= kFetchedLine; due_ -= kFetchedLine, at_ += kFetchedLine) fetchLine(at_);
  }

 private:
  std::uintptr_t at_;
  std::size_t left_;
  std::size_t portion_;
  std::size_t due_ = 0;
};

}  // namespace
