#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qav::test {

/// A run of bytes between guards, at any misalignment. A kernel that writes outside its run changes a guard.
class GuardedBytes {
 public:
  explicit GuardedBytes(std::size_t count, std::size_t misalignment = 0)
      : before_(kGuard + misalignment), count_(count), all_(before_ + count + kGuard, kPoison) {}

  std::uint8_t* data() { return all_.data() + before_; }
  std::size_t size() const { return count_; }
  std::vector<std::uint8_t> bytes() const {
    return {all_.begin() + static_cast<std::ptrdiff_t>(before_), all_.end() - static_cast<std::ptrdiff_t>(kGuard)};
  }
  [[nodiscard]] bool guardsIntact() const {
    const auto isPoison = [](std::uint8_t b) { return b == kPoison; };
    return std::all_of(all_.begin(), all_.begin() + static_cast<std::ptrdiff_t>(before_), isPoison) &&
           std::all_of(all_.end() - static_cast<std::ptrdiff_t>(kGuard), all_.end(), isPoison);
  }

 private:
  static constexpr std::size_t kGuard = 128;
  static constexpr std::uint8_t kPoison = 0xA5;

  std::size_t before_;
  std::size_t count_;
  std::vector<std::uint8_t> all_;
};

}  // namespace qav::test
