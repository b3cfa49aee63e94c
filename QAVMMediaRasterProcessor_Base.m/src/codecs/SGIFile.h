#pragma once

#include <QAVPixelImage.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

#include <sys/stat.h>

/// What reading and writing SGI image files share. Numbers in a file are big-endian.
namespace qav::sgi {

inline constexpr std::size_t kHeaderSize = 512;
inline constexpr unsigned kMagic = 474;
inline constexpr std::uint8_t kRunLengthCoded = 1;
/// Planes are read and written in strips of about this size, which stay in the processor's caches.
inline constexpr std::size_t kStripSize = std::size_t{128} * 1024;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

struct ReleaseImage {
  void operator()(QAVPixelImage* image) const { image->Release(); }
};
using OwnedImage = std::unique_ptr<QAVPixelImage, ReleaseImage>;

/// `file` without a buffer of the C library's own, as all reads and writes are large.
inline File unbuffered(std::FILE* file) {
  if (file) std::setvbuf(file, nullptr, _IONBF, 0);
  return File(file);
}

/// Kind and size of what stands at a path.
struct FileStatus {
  explicit FileStatus(const char* path) {
    struct stat status;
    if (::stat(path, &status) != 0) return;
    isRegular = S_ISREG(status.st_mode);
    size = static_cast<std::uint64_t>(status.st_size);
  }
  bool isRegular = false;
  std::uint64_t size = 0;
};

inline unsigned bigEndian16(const std::uint8_t* at) { return unsigned{at[0]} << 8 | at[1]; }
inline std::uint32_t bigEndian32(const std::uint8_t* at) { return bigEndian16(at) << 16 | bigEndian16(at + 2); }
inline void putBigEndian16(std::uint8_t* at, unsigned value) {
  at[0] = static_cast<std::uint8_t>(value >> 8);
  at[1] = static_cast<std::uint8_t>(value);
}

}  // namespace qav::sgi
