#include "kernels/ColourMedian.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const ColourMedianKernels colourMedian;
}
#if defined(__x86_64__)
namespace avx2 {
extern const ColourMedianKernels colourMedian;
}
namespace avx512 {
extern const ColourMedianKernels colourMedian;
}
namespace avx512vbmi {
extern const ColourMedianKernels colourMedian;
}
#endif

const ColourMedianKernels& colourMedianKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::colourMedian, &avx2::colourMedian, &avx512::colourMedian, &avx512vbmi::colourMedian});
#else
  return baseline::colourMedian;
#endif
}

}  // namespace qav::kernels
