#include "kernels/G4Rows.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const G4RowKernels g4Rows;
}
#if defined(__x86_64__)
namespace avx2 {
extern const G4RowKernels g4Rows;
}
namespace avx512 {
extern const G4RowKernels g4Rows;
}
namespace avx512vbmi {
extern const G4RowKernels g4Rows;
}
#endif

const G4RowKernels& g4RowKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::g4Rows, &avx2::g4Rows, &avx512::g4Rows, &avx512vbmi::g4Rows});
#else
  return baseline::g4Rows;
#endif
}

}  // namespace qav::kernels
