#include "kernels/Convolution.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const ConvolutionKernels convolution;
}
#if defined(__x86_64__)
namespace avx2 {
extern const ConvolutionKernels convolution;
}
namespace avx512 {
extern const ConvolutionKernels convolution;
}
namespace avx512vbmi {
extern const ConvolutionKernels convolution;
}
#endif

const ConvolutionKernels& convolutionKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::convolution, &avx2::convolution, &avx512::convolution, &avx512vbmi::convolution});
#else
  return baseline::convolution;
#endif
}

}  // namespace qav::kernels
