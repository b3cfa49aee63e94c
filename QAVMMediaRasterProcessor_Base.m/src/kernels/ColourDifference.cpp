#include "kernels/ColourDifference.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const ColourDifferenceKernels colourDifference;
}
#if defined(__x86_64__)
namespace avx2 {
extern const ColourDifferenceKernels colourDifference;
}
namespace avx512 {
extern const ColourDifferenceKernels colourDifference;
}
namespace avx512vbmi {
extern const ColourDifferenceKernels colourDifference;
}
#endif

const ColourDifferenceKernels& colourDifferenceKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::colourDifference, &avx2::colourDifference, &avx512::colourDifference, &avx512vbmi::colourDifference});
#else
  return baseline::colourDifference;
#endif
}

}  // namespace qav::kernels
