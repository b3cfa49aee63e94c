// Opens the target region and the namespace of one instruction-set level. A kernel source includes every other header
// first, so that what those define stays compiled for the baseline and the linker may pick any copy of it; RegionEnd.h
// closes the region. No include guard: one pair for each source.

#include <cstddef>
#include <cstdint>
#include <cstring>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

#if QAV_KERNEL_LEVEL == 0
#define QAV_KERNEL_NAMESPACE baseline
#elif QAV_KERNEL_LEVEL == 1
#define QAV_KERNEL_NAMESPACE avx2
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2,fma,bmi,bmi2,lzcnt,popcnt"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2,fma,bmi,bmi2,lzcnt,popcnt")
#endif
#elif QAV_KERNEL_LEVEL == 2
#define QAV_KERNEL_NAMESPACE avx512
#if defined(__clang__)
#pragma clang attribute push(                                                                              \
    __attribute__((target("avx2,fma,bmi,bmi2,lzcnt,popcnt,avx512f,avx512bw,avx512cd,avx512dq,avx512vl"))), \
    apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2,fma,bmi,bmi2,lzcnt,popcnt,avx512f,avx512bw,avx512cd,avx512dq,avx512vl")
#pragma GCC target("prefer-vector-width=512")
#endif
#else
#define QAV_KERNEL_NAMESPACE avx512vbmi
#if defined(__clang__)
#pragma clang attribute push(                                                                           \
    __attribute__((target("avx2,fma,bmi,bmi2,lzcnt,popcnt,avx512f,avx512bw,avx512cd,avx512dq,avx512vl," \
                          "avx512vbmi,avx512vbmi2,avx512vnni,avx512bitalg,avx512vpopcntdq"))),          \
    apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2,fma,bmi,bmi2,lzcnt,popcnt,avx512f,avx512bw,avx512cd,avx512dq,avx512vl")
#pragma GCC target("avx512vbmi,avx512vbmi2,avx512vnni,avx512bitalg,avx512vpopcntdq,prefer-vector-width=512")
#endif
#endif

namespace qav::kernels::QAV_KERNEL_NAMESPACE {
