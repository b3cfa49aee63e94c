#include "kernels/ChannelPlanes.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const ChannelPlanesKernels channelPlanes;
}
#if defined(__x86_64__)
namespace avx2 {
extern const ChannelPlanesKernels channelPlanes;
}
namespace avx512 {
extern const ChannelPlanesKernels channelPlanes;
}
namespace avx512vbmi {
extern const ChannelPlanesKernels channelPlanes;
}
#endif

const ChannelPlanesKernels& channelPlanesKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::channelPlanes, &avx2::channelPlanes, &avx512::channelPlanes, &avx512vbmi::channelPlanes});
#else
  return baseline::channelPlanes;
#endif
}

}  // namespace qav::kernels
