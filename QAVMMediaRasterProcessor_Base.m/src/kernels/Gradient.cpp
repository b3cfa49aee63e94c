#include "kernels/Gradient.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const GradientKernels gradient;
}
#if defined(__x86_64__)
namespace avx2 {
extern const GradientKernels gradient;
}
namespace avx512 {
extern const GradientKernels gradient;
}
namespace avx512vbmi {
extern const GradientKernels gradient;
}
#endif

const GradientKernels& gradientKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::gradient, &avx2::gradient, &avx512::gradient, &avx512vbmi::gradient});
#else
  return baseline::gradient;
#endif
}

}  // namespace qav::kernels
