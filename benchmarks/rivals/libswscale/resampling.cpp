#include "support/Comparison.h"

extern "C" {
#include <libswscale/swscale.h>
}

#include <memory>

namespace qav::bench {
namespace {

struct FreeContext {
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};

std::function<void()> scaling(int width, int height, int flags) {
  return [=, context = std::shared_ptr<SwsContext>(), out = std::vector<std::uint8_t>()]() mutable {
    if (!context) {
      const double parameters[] = {flags == SWS_LANCZOS ? 3.0 : 0.0, 0.5};
      context.reset(sws_getContext(kWidth, kHeight, AV_PIX_FMT_RGBA, width, height, AV_PIX_FMT_RGBA, flags, nullptr,
                                   nullptr, parameters),
                    FreeContext());
      out.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    }
    const std::uint8_t* const from[] = {photograph(kWidth, kHeight, 4).data()};
    std::uint8_t* const to[] = {out.data()};
    const int fromStride[] = {kWidth * 4}, toStride[] = {width * 4};
    sws_scale(context.get(), from, fromStride, 0, kHeight, to, toStride);
    keep(out.data());
  };
}

[[maybe_unused]] const bool added[] = {
    add("resize cubic to 640x360", "libswscale", scaling(640, 360, SWS_BICUBIC)),
    add("resize cubic to 960x540", "libswscale", scaling(960, 540, SWS_BICUBIC)),
    add("resize cubic to 3840x2160", "libswscale", scaling(3840, 2160, SWS_BICUBIC)),
    add("resize Lanczos3 to 640x360", "libswscale", scaling(640, 360, SWS_LANCZOS)),
    add("resize Lanczos3 to 960x540", "libswscale", scaling(960, 540, SWS_LANCZOS)),
    add("resize Lanczos3 to 3840x2160", "libswscale", scaling(3840, 2160, SWS_LANCZOS)),
};

}  // namespace
}  // namespace qav::bench
