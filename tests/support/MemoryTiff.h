#pragma once

#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace qav::test {

/// A TIFF file in memory, for libtiff as a codec.
struct MemoryTiff {
  std::vector<std::uint8_t> bytes;
  std::size_t at = 0;

  TIFF* open(const char* mode) {
    at = 0;
    return TIFFClientOpen(
        "memory", mode, this, [](thandle_t h, void* to, tmsize_t n) { return self(h).read(to, n); },
        [](thandle_t h, void* from, tmsize_t n) { return self(h).write(from, n); },
        [](thandle_t h, toff_t to, int whence) { return self(h).seek(to, whence); }, [](thandle_t) { return 0; },
        [](thandle_t h) -> toff_t { return self(h).bytes.size(); }, nullptr, nullptr);
  }

 private:
  static MemoryTiff& self(thandle_t handle) { return *static_cast<MemoryTiff*>(handle); }
  tmsize_t read(void* to, tmsize_t count) {
    const std::size_t got = std::min(static_cast<std::size_t>(count), bytes.size() - std::min(at, bytes.size()));
    if (got > 0) std::memcpy(to, bytes.data() + at, got);
    at += got;
    return static_cast<tmsize_t>(got);
  }
  tmsize_t write(const void* from, tmsize_t count) {
    bytes.resize(std::max(bytes.size(), at + static_cast<std::size_t>(count)));
    std::memcpy(bytes.data() + at, from, static_cast<std::size_t>(count));
    at += static_cast<std::size_t>(count);
    return count;
  }
  toff_t seek(toff_t to, int whence) {
    return at = static_cast<std::size_t>(to) + (whence == SEEK_CUR ? at : whence == SEEK_END ? bytes.size() : 0);
  }
};

}  // namespace qav::test
