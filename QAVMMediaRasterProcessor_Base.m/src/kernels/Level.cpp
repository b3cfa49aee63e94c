#include "kernels/Level.h"

#include <atomic>

namespace qav::kernels {
namespace {

Level detect() noexcept {
#if defined(__x86_64__)
  __builtin_cpu_init();
  const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi") &&
                    __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
  const bool avx512 = avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                      __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
                      __builtin_cpu_supports("avx512vl");
  const bool vbmi = avx512 && __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
                    __builtin_cpu_supports("avx512vnni") && __builtin_cpu_supports("avx512bitalg") &&
                    __builtin_cpu_supports("avx512vpopcntdq");
  if (vbmi) return Level::Avx512Vbmi;
  if (avx512) return Level::Avx512;
  if (avx2) return Level::Avx2;
#endif
  return Level::Baseline;
}

// Zero, and so the baseline, until the library's own initialisation: calls from other libraries' initialisers work.
std::atomic<Level> active{Level::Baseline};
[[maybe_unused]] const bool chosenAtLoad = (active.store(detect(), std::memory_order_relaxed), true);

}  // namespace

Level bestLevel() noexcept {
  static const Level best = detect();
  return best;
}

Level activeLevel() noexcept { return active.load(std::memory_order_relaxed); }

bool setActiveLevel(Level level) noexcept {
  if (level < Level::Baseline || level > bestLevel()) return false;
  active.store(level, std::memory_order_relaxed);
  return true;
}

const char* levelName(Level level) noexcept {
  constexpr const char* names[] = {"baseline", "avx2", "avx512", "avx512vbmi"};
  const auto index = static_cast<std::size_t>(level);
  return index < 4 ? names[index] : "unknown";
}

}  // namespace qav::kernels
