#include "kernels/MaskAlpha.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const MaskAlphaKernels maskAlpha;
}
#if defined(__x86_64__)
namespace avx2 {
extern const MaskAlphaKernels maskAlpha;
}
namespace avx512 {
extern const MaskAlphaKernels maskAlpha;
}
namespace avx512vbmi {
extern const MaskAlphaKernels maskAlpha;
}
#endif

const MaskAlphaKernels& maskAlphaKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::maskAlpha, &avx2::maskAlpha, &avx512::maskAlpha, &avx512vbmi::maskAlpha});
#else
  return baseline::maskAlpha;
#endif
}

}  // namespace qav::kernels
