#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Makes block-record files.
namespace qav::test {

class BlockFileWriter {
 public:
  explicit BlockFileWriter(std::int32_t entries) : bytes_(240, 0x11) {
    record({1, 2, 3});
    record({4});
    record(numbers({entries}));
    record({5});
  }

  static std::vector<std::uint8_t> numbers(const std::vector<std::int64_t>& values) {
    std::vector<std::uint8_t> bytes;
    for (const std::int64_t value : values)
      for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    return bytes;
  }

  BlockFileWriter& record(const std::vector<std::uint8_t>& data) {
    length(static_cast<std::int32_t>(data.size()));
    bytes_.insert(bytes_.end(), data.begin(), data.end());
    pad();
    return *this;
  }
  /// A length block alone.
  BlockFileWriter& length(std::int64_t value) {
    const auto number = numbers({value});
    bytes_.insert(bytes_.end(), number.begin(), number.end());
    bytes_.resize(bytes_.size() + 76, 0x22);
    return *this;
  }
  BlockFileWriter& entry(std::int32_t type, std::int32_t records) { return record(numbers({type, records})); }
  BlockFileWriter& image(std::int64_t extent0, std::int64_t extent1, std::int64_t type, std::int64_t bands,
                         std::int64_t tableSize) {
    return entry(1, 0).record(numbers({extent0, extent1, 0, type, bands, 0, 0, 0, tableSize}));
  }

  const std::vector<std::uint8_t>& bytes() const { return bytes_; }

 private:
  void pad() { bytes_.resize((bytes_.size() + 79) / 80 * 80, 0x33); }

  std::vector<std::uint8_t> bytes_;
};

}  // namespace qav::test
