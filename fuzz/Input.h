#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qav::fuzz {

/// The bytes of an input as parameters, one after another; behind its end there are zeros.
class Input {
 public:
  explicit Input(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool ended() const { return bytes_.empty(); }
  std::uint8_t byte() {
    if (bytes_.empty()) return 0;
    const std::uint8_t first = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return first;
  }
  int word() {
    const int high = byte();
    return high << 8 | byte();
  }
  /// 0 to `limit` - 1, from one or two bytes.
  int below(int limit) { return (limit > 256 ? word() : byte()) % limit; }
  std::span<const std::uint8_t> rest() const { return bytes_; }

 private:
  std::span<const std::uint8_t> bytes_;
};

}  // namespace qav::fuzz
