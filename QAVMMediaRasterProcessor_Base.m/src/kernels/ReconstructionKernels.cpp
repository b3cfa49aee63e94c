#include "kernels/ReconstructionKernels.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const ReconstructionKernels reconstruction;
}
#if defined(__x86_64__)
namespace avx2 {
extern const ReconstructionKernels reconstruction;
}
namespace avx512 {
extern const ReconstructionKernels reconstruction;
}
namespace avx512vbmi {
extern const ReconstructionKernels reconstruction;
}
#endif

const ReconstructionKernels& reconstructionKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::reconstruction, &avx2::reconstruction, &avx512::reconstruction, &avx512vbmi::reconstruction});
#else
  return baseline::reconstruction;
#endif
}

}  // namespace qav::kernels
