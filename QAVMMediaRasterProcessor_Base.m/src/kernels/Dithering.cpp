#include "kernels/Dithering.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const DitheringKernels dithering;
}
#if defined(__x86_64__)
namespace avx2 {
extern const DitheringKernels dithering;
}
namespace avx512 {
extern const DitheringKernels dithering;
}
namespace avx512vbmi {
extern const DitheringKernels dithering;
}
#endif

const DitheringKernels& ditheringKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::dithering, &avx2::dithering, &avx512::dithering, &avx512vbmi::dithering});
#else
  return baseline::dithering;
#endif
}

}  // namespace qav::kernels
