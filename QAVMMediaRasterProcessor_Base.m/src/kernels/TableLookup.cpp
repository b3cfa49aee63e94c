#include "kernels/TableLookup.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const TableLookupKernels tableLookup;
}
#if defined(__x86_64__)
namespace avx2 {
extern const TableLookupKernels tableLookup;
}
namespace avx512 {
extern const TableLookupKernels tableLookup;
}
namespace avx512vbmi {
extern const TableLookupKernels tableLookup;
}
#endif

const TableLookupKernels& tableLookupKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel({&baseline::tableLookup, &avx2::tableLookup, &avx512::tableLookup, &avx512vbmi::tableLookup});
#else
  return baseline::tableLookup;
#endif
}

}  // namespace qav::kernels
