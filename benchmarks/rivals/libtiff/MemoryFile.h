#pragma once

#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace qav::bench {

/// A TIFF file in memory, so that only the codec is timed.
struct MemoryFile {
  std::vector<std::uint8_t> bytes;
  std::size_t at = 0;
};

inline tmsize_t readFile(thandle_t handle, void* to, tmsize_t count) {
  auto& file = *static_cast<MemoryFile*>(handle);
  const std::size_t got =
      std::min(static_cast<std::size_t>(count), file.bytes.size() - std::min(file.at, file.bytes.size()));
  if (got > 0) std::memcpy(to, file.bytes.data() + file.at, got);
  file.at += got;
  return static_cast<tmsize_t>(got);
}

inline tmsize_t writeFile(thandle_t handle, void* from, tmsize_t count) {
  auto& file = *static_cast<MemoryFile*>(handle);
  file.bytes.resize(std::max(file.bytes.size(), file.at + static_cast<std::size_t>(count)));
  std::memcpy(file.bytes.data() + file.at, from, static_cast<std::size_t>(count));
  file.at += static_cast<std::size_t>(count);
  return count;
}

inline toff_t seekFile(thandle_t handle, toff_t to, int whence) {
  auto& file = *static_cast<MemoryFile*>(handle);
  file.at = static_cast<std::size_t>(to) + (whence == SEEK_CUR ? file.at : whence == SEEK_END ? file.bytes.size() : 0);
  return file.at;
}

inline TIFF* openFile(MemoryFile& file, const char* mode) {
  file.at = 0;
  return TIFFClientOpen(
      "memory", mode, &file, &readFile, &writeFile, &seekFile, [](thandle_t) { return 0; },
      [](thandle_t h) -> toff_t { return static_cast<MemoryFile*>(h)->bytes.size(); }, nullptr, nullptr);
}

}  // namespace qav::bench
