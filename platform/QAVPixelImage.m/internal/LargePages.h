#pragma once

#include <cstddef>
#include <cstdint>
#if defined(__linux__)
#include <sys/mman.h>
#endif

/// Asks the system for large pages under a large buffer: first touching 75 MB in small pages costs more than most
/// operations on them. Advice: without it everything works all the same.
inline void adviseLargePages([[maybe_unused]] void* buffer, [[maybe_unused]] std::size_t bytes) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr std::size_t kLarge = std::size_t{4} << 20;
  constexpr std::uintptr_t kPage = 4096;
  if (bytes < kLarge) return;
  const auto begin = (reinterpret_cast<std::uintptr_t>(buffer) + kPage - 1) / kPage * kPage;
  const auto end = (reinterpret_cast<std::uintptr_t>(buffer) + bytes) / kPage * kPage;
  static_cast<void>(madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
#endif
}
