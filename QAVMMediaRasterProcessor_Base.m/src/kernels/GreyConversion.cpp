#include "kernels/GreyConversion.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const GreyConversionKernels greyConversion;
}
#if defined(__x86_64__)
namespace avx2 {
extern const GreyConversionKernels greyConversion;
}
namespace avx512 {
extern const GreyConversionKernels greyConversion;
}
namespace avx512vbmi {
extern const GreyConversionKernels greyConversion;
}
#endif

const GreyConversionKernels& greyConversionKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::greyConversion, &avx2::greyConversion, &avx512::greyConversion, &avx512vbmi::greyConversion});
#else
  return baseline::greyConversion;
#endif
}

}  // namespace qav::kernels
