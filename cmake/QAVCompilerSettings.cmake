# Settings that every target of the project shares.

# The same bits on every machine: no contraction of a*b+c into a fused operation, never fast-math.
add_compile_options(-ffp-contract=off)

add_library(qav_warnings INTERFACE)
target_compile_options(qav_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion $<$<BOOL:${QAV_WERROR}>:-Werror>
  # GCC 12 sees overlaps in the concatenation of std::string that are not there.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict>
  # The instrumentation hides from GCC 12 that std::regex and std::function set what they read.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Asan>>:-Wno-maybe-uninitialized>)

# Flags of the inner loops. None of them changes a result: errno and floating-point traps are not part of it.
add_library(qav_kernel_flags INTERFACE)
target_compile_options(qav_kernel_flags INTERFACE
  -fno-math-errno -fno-trapping-math -Wno-psabi
  $<$<CONFIG:Release,RelWithDebInfo>:-O3>
  $<$<CXX_COMPILER_ID:Clang>:-Wno-pass-failed>
  # GCC 12 takes the deliberately undefined operands of its own intrinsics for mistakes.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-uninitialized;-Wno-maybe-uninitialized>)

if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|amd64|AMD64")
  set(QAV_KERNEL_LEVELS baseline avx2 avx512 avx512vbmi)
else()
  set(QAV_KERNEL_LEVELS baseline)
endif()
