#include "kernels/FloatResampling.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const FloatResamplingKernels floatResampling;
}
#if defined(__x86_64__)
namespace avx2 {
extern const FloatResamplingKernels floatResampling;
}
namespace avx512 {
extern const FloatResamplingKernels floatResampling;
}
namespace avx512vbmi {
extern const FloatResamplingKernels floatResampling;
}
#endif

const FloatResamplingKernels& floatResamplingKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::floatResampling, &avx2::floatResampling, &avx512::floatResampling, &avx512vbmi::floatResampling});
#else
  return baseline::floatResampling;
#endif
}

}  // namespace qav::kernels
