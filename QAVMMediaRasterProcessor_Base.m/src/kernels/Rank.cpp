#include "kernels/Rank.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const RankKernels rank;
}
#if defined(__x86_64__)
namespace avx2 {
extern const RankKernels rank;
}
namespace avx512 {
extern const RankKernels rank;
}
namespace avx512vbmi {
extern const RankKernels rank;
}
#endif

const RankKernels& rankKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::rank, &avx2::rank, &avx512::rank, &avx512vbmi::rank});
#else
  return baseline::rank;
#endif
}

}  // namespace qav::kernels
