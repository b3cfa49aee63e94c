#pragma once

#include <cstddef>
#include <cstdint>
#if defined(__linux__)
#include <sys/mman.h>
#endif

/// A buffer made with `new[]`, its bytes unset. Under a large one the system is asked for large pages: first touching
/// 75 MB in small pages costs more than most operations on them.
inline unsigned char* newPixelBuffer(std::size_t bytes) {
  auto* const buffer = new unsigned char[bytes];
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr std::size_t kLarge = std::size_t{4} << 20;
  constexpr std::uintptr_t kPage = 4096;
  if (bytes >= kLarge) {
    const auto begin = (reinterpret_cast<std::uintptr_t>(buffer) + kPage - 1) / kPage * kPage;
    const auto end = (reinterpret_cast<std::uintptr_t>(buffer) + bytes) / kPage * kPage;
    // Advice: without it everything works all the same.
    static_cast<void>(madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
  }
#endif
  return buffer;
}
