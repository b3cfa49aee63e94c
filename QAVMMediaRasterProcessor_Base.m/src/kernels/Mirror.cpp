#include "kernels/Mirror.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const MirrorKernels mirror;
}
#if defined(__x86_64__)
namespace avx2 {
extern const MirrorKernels mirror;
}
namespace avx512 {
extern const MirrorKernels mirror;
}
namespace avx512vbmi {
extern const MirrorKernels mirror;
}
#endif

const MirrorKernels& mirrorKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::mirror, &avx2::mirror, &avx512::mirror, &avx512vbmi::mirror});
#else
  return baseline::mirror;
#endif
}

}  // namespace qav::kernels
