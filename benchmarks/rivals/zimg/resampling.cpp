#include "support/Comparison.h"

#include <zimg.h>

#include <cstdlib>
#include <memory>

namespace qav::bench {
namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
using Plane = std::unique_ptr<void, Free>;

std::size_t strideOf(int width) { return (static_cast<std::size_t>(width) + 63) / 64 * 64; }

Plane newPlane(int width, int height) {
  return Plane(std::aligned_alloc(64, strideOf(width) * static_cast<std::size_t>(height)));
}

struct FreeGraph {
  void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
};

// zimg works on planes. It gets the four channels as one plane of four times the height, already apart, so it neither
// splits nor joins pixels; what bleeds across the seams does not matter here.
class Scaling {
 public:
  Scaling(int width, int height, zimg_resample_filter_e filter, double a, double b)
      : source_(newPlane(kWidth, kHeight * 4)), target_(newPlane(width, height * 4)) {
    const auto& pixels = photograph(kWidth, kHeight, 4);
    auto* const bytes = static_cast<std::uint8_t*>(source_.get());
    const std::size_t plane = strideOf(kWidth) * kHeight;
    for (std::size_t i = 0; i < pixels.size(); ++i) bytes[i % 4 * plane + i / 4] = pixels[i];
    zimg_image_format from, to;
    zimg_image_format_default(&from, ZIMG_API_VERSION);
    from.width = kWidth;
    from.height = kHeight * 4;
    from.pixel_type = ZIMG_PIXEL_BYTE;
    from.pixel_range = ZIMG_RANGE_FULL;
    to = from;
    to.width = static_cast<unsigned>(width);
    to.height = static_cast<unsigned>(height) * 4;
    zimg_graph_builder_params params;
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    params.resample_filter = filter;
    params.filter_param_a = a;
    params.filter_param_b = b;
    params.cpu_type = ZIMG_CPU_AUTO_64B;
    graph_.reset(zimg_filter_graph_build(&from, &to, &params));
    std::size_t scratch = 0;
    zimg_filter_graph_get_tmp_size(graph_.get(), &scratch);
    scratch_.reset(std::aligned_alloc(64, (scratch + 63) / 64 * 64));
    in_.version = out_.version = ZIMG_API_VERSION;
    in_.plane[0] = {source_.get(), static_cast<std::ptrdiff_t>(strideOf(kWidth)), ZIMG_BUFFER_MAX};
    out_.plane[0] = {target_.get(), static_cast<std::ptrdiff_t>(strideOf(width)), ZIMG_BUFFER_MAX};
  }

  void run() {
    zimg_filter_graph_process(graph_.get(), &in_, &out_, scratch_.get(), nullptr, nullptr, nullptr, nullptr);
    keep(target_.get());
  }

 private:
  Plane source_, target_, scratch_;
  std::unique_ptr<zimg_filter_graph, FreeGraph> graph_;
  zimg_image_buffer_const in_{};
  zimg_image_buffer out_{};
};

std::function<void()> scaling(int width, int height, zimg_resample_filter_e filter, double a, double b) {
  return [=, made = std::shared_ptr<Scaling>()]() mutable {
    if (!made) made = std::make_shared<Scaling>(width, height, filter, a, b);
    made->run();
  };
}

std::function<void()> cubic(int width, int height) { return scaling(width, height, ZIMG_RESIZE_BICUBIC, 0.0, 0.5); }
std::function<void()> lanczos(int width, int height) { return scaling(width, height, ZIMG_RESIZE_LANCZOS, 3.0, 0.0); }

[[maybe_unused]] const bool added[] = {
    add("resize cubic to 640x360", "zimg", cubic(640, 360)),
    add("resize cubic to 960x540", "zimg", cubic(960, 540)),
    add("resize cubic to 3840x2160", "zimg", cubic(3840, 2160)),
    add("resize Lanczos3 to 640x360", "zimg", lanczos(640, 360)),
    add("resize Lanczos3 to 960x540", "zimg", lanczos(960, 540)),
    add("resize Lanczos3 to 3840x2160", "zimg", lanczos(3840, 2160)),
    add("resize triangle to 2880x1620", "zimg", scaling(2880, 1620, ZIMG_RESIZE_BILINEAR, 0.0, 0.0)),
};

}  // namespace
}  // namespace qav::bench
