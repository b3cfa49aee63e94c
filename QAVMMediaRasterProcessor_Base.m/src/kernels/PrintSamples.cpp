#include "kernels/PrintSamples.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const PrintSamplesKernels printSamples;
}
#if defined(__x86_64__)
namespace avx2 {
extern const PrintSamplesKernels printSamples;
}
namespace avx512 {
extern const PrintSamplesKernels printSamples;
}
namespace avx512vbmi {
extern const PrintSamplesKernels printSamples;
}
#endif

const PrintSamplesKernels& printSamplesKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::printSamples, &avx2::printSamples, &avx512::printSamples, &avx512vbmi::printSamples});
#else
  return baseline::printSamples;
#endif
}

}  // namespace qav::kernels
