#include "kernels/ChannelExtremes.h"

#include "kernels/Level.h"

namespace qav::kernels {

namespace baseline {
extern const ChannelExtremesKernels channelExtremes;
}
#if defined(__x86_64__)
namespace avx2 {
extern const ChannelExtremesKernels channelExtremes;
}
namespace avx512 {
extern const ChannelExtremesKernels channelExtremes;
}
namespace avx512vbmi {
extern const ChannelExtremesKernels channelExtremes;
}
#endif

const ChannelExtremesKernels& channelExtremesKernels() noexcept {
#if defined(__x86_64__)
  return atActiveLevel(
      {&baseline::channelExtremes, &avx2::channelExtremes, &avx512::channelExtremes, &avx512vbmi::channelExtremes});
#else
  return baseline::channelExtremes;
#endif
}

}  // namespace qav::kernels
