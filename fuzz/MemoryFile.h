#pragma once

#include "fuzz/Expect.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qav::fuzz {

/// A file that has a path and no disk: zeros, and `content` behind them.
class MemoryFile {
 public:
  explicit MemoryFile(std::span<const std::uint8_t> content, std::size_t zeros = 0)
      : descriptor_(::memfd_create("fuzz", 0)) {
    expect(descriptor_ >= 0);
    std::vector<std::uint8_t> bytes(zeros);
    bytes.insert(bytes.end(), content.begin(), content.end());
    expect(::write(descriptor_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  }
  ~MemoryFile() { ::close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

}  // namespace qav::fuzz
