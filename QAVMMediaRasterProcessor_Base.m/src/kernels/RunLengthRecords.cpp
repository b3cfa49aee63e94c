#include "kernels/RunLengthRecords.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const RunLengthRecordsKernels runLengthRecords;
}
#if defined(__x86_64__)
namespace avx2 {
extern const RunLengthRecordsKernels runLengthRecords;
}
namespace avx512 {
extern const RunLengthRecordsKernels runLengthRecords;
}
namespace avx512vbmi {
extern const RunLengthRecordsKernels runLengthRecords;
}
#endif

const RunLengthRecordsKernels& runLengthRecordsKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::runLengthRecords, &avx2::runLengthRecords, &avx512::runLengthRecords, &avx512vbmi::runLengthRecords});
#else
  return baseline::runLengthRecords;
#endif
}

}  // namespace qav::kernels
