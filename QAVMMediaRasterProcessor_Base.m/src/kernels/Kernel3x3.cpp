#include "kernels/Kernel3x3.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const Kernel3x3Kernels kernel3x3;
}
#if defined(__x86_64__)
namespace avx2 {
extern const Kernel3x3Kernels kernel3x3;
}
namespace avx512 {
extern const Kernel3x3Kernels kernel3x3;
}
namespace avx512vbmi {
extern const Kernel3x3Kernels kernel3x3;
}
#endif

const Kernel3x3Kernels& kernel3x3Kernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::kernel3x3, &avx2::kernel3x3, &avx512::kernel3x3, &avx512vbmi::kernel3x3});
#else
  return baseline::kernel3x3;
#endif
}

}  // namespace qav::kernels
