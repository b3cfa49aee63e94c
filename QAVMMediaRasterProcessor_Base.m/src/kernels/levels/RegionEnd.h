// Closes what RegionBegin.h has opened.

}  // namespace qav::kernels::QAV_KERNEL_NAMESPACE

#if QAV_KERNEL_LEVEL > 0
#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif
#endif
#undef QAV_KERNEL_NAMESPACE
