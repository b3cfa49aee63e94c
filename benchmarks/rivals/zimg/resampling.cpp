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

[[gnu::target("avx2")]] void split(const std::uint8_t* pixels, std::size_t count, std::uint8_t* r, std::uint8_t* g,
                                   std::uint8_t* b, std::uint8_t* a) {
  for (std::size_t i = 0; i < count; ++i) {
    r[i] = pixels[4 * i];
    g[i] = pixels[4 * i + 1];
    b[i] = pixels[4 * i + 2];
    a[i] = pixels[4 * i + 3];
  }
}

[[gnu::target("avx2")]] void join(const std::uint8_t* r, const std::uint8_t* g, const std::uint8_t* b,
                                  const std::uint8_t* a, std::size_t count, std::uint8_t* pixels) {
  for (std::size_t i = 0; i < count; ++i) {
    pixels[4 * i] = r[i];
    pixels[4 * i + 1] = g[i];
    pixels[4 * i + 2] = b[i];
    pixels[4 * i + 3] = a[i];
  }
}

// zimg works on planes: the pixels are split and joined around it. The four channels are one plane of four times the
// height to it; what bleeds across the seams does not matter here.
class Scaling {
 public:
  Scaling(int width, int height, zimg_resample_filter_e filter, double a, double b)
      : width_(static_cast<std::size_t>(width)),
        height_(static_cast<std::size_t>(height)),
        pixels_(width_ * height_ * 4),
        source_(newPlane(kWidth, kHeight * 4)),
        target_(newPlane(width, height * 4)) {
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
    splitSource();
    zimg_filter_graph_process(graph_.get(), &in_, &out_, scratch_.get(), nullptr, nullptr, nullptr, nullptr);
    joinTarget();
    keep(target_.get());
  }

 private:
  void splitSource() {
    const std::uint8_t* const from = photograph(kWidth, kHeight, 4).data();
    auto* const to = static_cast<std::uint8_t*>(source_.get());
    const std::size_t stride = strideOf(kWidth), plane = stride * kHeight;
    for (std::size_t y = 0; y < kHeight; ++y) {
      std::uint8_t* const row = to + y * stride;
      split(from + y * kWidth * 4, kWidth, row, row + plane, row + 2 * plane, row + 3 * plane);
    }
  }
  void joinTarget() {
    const auto* const from = static_cast<const std::uint8_t*>(target_.get());
    const std::size_t stride = strideOf(static_cast<int>(width_)), plane = stride * height_;
    for (std::size_t y = 0; y < height_; ++y) {
      const std::uint8_t* const row = from + y * stride;
      join(row, row + plane, row + 2 * plane, row + 3 * plane, width_, pixels_.data() + y * width_ * 4);
    }
  }

  std::size_t width_, height_;
  std::vector<std::uint8_t> pixels_;
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
