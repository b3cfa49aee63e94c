#include "kernels/Base85.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const Base85Kernels base85;
}
#if defined(__x86_64__)
namespace avx2 {
extern const Base85Kernels base85;
}
namespace avx512 {
extern const Base85Kernels base85;
}
namespace avx512vbmi {
extern const Base85Kernels base85;
}
#endif

const Base85Kernels& base85Kernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::base85, &avx2::base85, &avx512::base85, &avx512vbmi::base85});
#else
  return baseline::base85;
#endif
}

}  // namespace qav::kernels
