#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

/// The choice between the instruction sets that the inner loops are compiled for.
namespace qav::kernels {

enum class Level : std::int32_t {
  Baseline = 0,    ///< what every processor of the architecture has
  Avx2 = 1,        ///< AVX2, FMA, BMI
  Avx512 = 2,      ///< AVX-512 F, BW, CD, DQ, VL
  Avx512Vbmi = 3,  ///< also VBMI, VBMI2, VNNI, BITALG, VPOPCNTDQ
};

inline constexpr int kLevelCount = 4;

/// The best level of this machine, found once when the library is loaded.
Level bestLevel() noexcept;
/// The level in use: the best one, unless a test has asked for another.
Level activeLevel() noexcept;
/// Uses `level` from now on, for tests that run every level. False, and no change, when the machine or the build
/// does not have it. Not for use while other threads run kernels.
bool setActiveLevel(Level level) noexcept;
/// "baseline", "avx2", "avx512" or "avx512vbmi".
const char* levelName(Level level) noexcept;

/// The kernel family of the active level, from one table a level, lowest first.
template <class Kernels>
const Kernels& atActiveLevel(std::initializer_list<const Kernels*> tables) noexcept {
  return *tables.begin()[static_cast<std::size_t>(activeLevel())];
}

}  // namespace qav::kernels
