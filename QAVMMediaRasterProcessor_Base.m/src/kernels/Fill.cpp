#include "kernels/Fill.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const FillKernels fill;
}
#if defined(__x86_64__)
namespace avx2 {
extern const FillKernels fill;
}
namespace avx512 {
extern const FillKernels fill;
}
namespace avx512vbmi {
extern const FillKernels fill;
}
#endif

const FillKernels& fillKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::fill, &avx2::fill, &avx512::fill, &avx512vbmi::fill});
#else
  return baseline::fill;
#endif
}

}  // namespace qav::kernels
