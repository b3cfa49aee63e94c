#include "kernels/Blend.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const BlendKernels blend;
}
#if defined(__x86_64__)
namespace avx2 {
extern const BlendKernels blend;
}
namespace avx512 {
extern const BlendKernels blend;
}
namespace avx512vbmi {
extern const BlendKernels blend;
}
#endif

const BlendKernels& blendKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::blend, &avx2::blend, &avx512::blend, &avx512vbmi::blend});
#else
  return baseline::blend;
#endif
}

}  // namespace qav::kernels
