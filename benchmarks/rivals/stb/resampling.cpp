#include "support/Comparison.h"

#define STB_IMAGE_RESIZE_STATIC
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#include <stb_image_resize.h>
#pragma GCC diagnostic pop

namespace qav::bench {
namespace {

std::function<void()> scaling(int width, int height, stbir_filter filter) {
  return [=, out = std::vector<std::uint8_t>()]() mutable {
    out.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    stbir_resize_uint8_generic(photograph(kWidth, kHeight, 4).data(), kWidth, kHeight, 0, out.data(), width, height, 0,
                               4, STBIR_ALPHA_CHANNEL_NONE, 0, STBIR_EDGE_CLAMP, filter, STBIR_COLORSPACE_LINEAR,
                               nullptr);
    keep(out.data());
  };
}

[[maybe_unused]] const bool added[] = {
    add("resize cubic to 640x360", "stb", scaling(640, 360, STBIR_FILTER_CATMULLROM)),
    add("resize cubic to 960x540", "stb", scaling(960, 540, STBIR_FILTER_CATMULLROM)),
    add("resize cubic to 3840x2160", "stb", scaling(3840, 2160, STBIR_FILTER_CATMULLROM)),
    add("resize box to 320x180", "stb", scaling(320, 180, STBIR_FILTER_BOX)),
    add("resize triangle to 2880x1620", "stb", scaling(2880, 1620, STBIR_FILTER_TRIANGLE)),
};

}  // namespace
}  // namespace qav::bench
