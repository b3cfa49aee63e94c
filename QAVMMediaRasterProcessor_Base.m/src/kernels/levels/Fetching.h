// Included inside the region, behind RegionBegin.h.

namespace {

// Calls memory into the second-level cache, in even portions while there is something else to do. Small ones: many
// lines at once take the places of the misses that the work waits for.
class Fetching {
 public:
  template <class Sample>
  Fetching(const Sample* from, std::size_t samples, std::size_t portions)
      : at_(reinterpret_cast<const char*>(from)),
        left_(samples * sizeof(Sample)),
        portion_((left_ + portions - 1) / portions) {}

  [[gnu::always_inline]] void portion(std::size_t count = 1) {
    const std::size_t wanted = count * portion_, now = wanted < left_ ? wanted : left_;
    due_ += now;
    left_ -= now;
    constexpr std::size_t kLine = 64, kSecondLevel = 2;
    for (; due_ >= kLine; due_ -= kLine, at_ += kLine) __builtin_prefetch(at_, 0, kSecondLevel);
  }

 private:
  const char* at_;
  std::size_t left_;
  std::size_t portion_;
  std::size_t due_ = 0;
};

}  // namespace
