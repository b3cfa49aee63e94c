#include "kernels/ByteResampling.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const ByteResamplingKernels byteResampling;
}
#if defined(__x86_64__)
namespace avx2 {
extern const ByteResamplingKernels byteResampling;
}
namespace avx512 {
extern const ByteResamplingKernels byteResampling;
}
namespace avx512vbmi {
extern const ByteResamplingKernels byteResampling;
}
#endif

const ByteResamplingKernels& byteResamplingKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::byteResampling, &avx2::byteResampling, &avx512::byteResampling, &avx512vbmi::byteResampling});
#else
  return baseline::byteResampling;
#endif
}

}  // namespace qav::kernels
