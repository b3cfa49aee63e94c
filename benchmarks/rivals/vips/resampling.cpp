#include "support/Comparison.h"

#include <vips/vips.h>

namespace qav::bench {
namespace {

VipsImage* picture() {
  static VipsImage* const image = [] {
    if (VIPS_INIT("qav_benchmarks")) return static_cast<VipsImage*>(nullptr);
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    const auto& bytes = photograph(kWidth, kHeight, 4);
    return vips_image_new_from_memory(bytes.data(), bytes.size(), kWidth, kHeight, 4, VIPS_FORMAT_UCHAR);
  }();
  return image;
}

std::function<void()> scaling(int width, VipsKernel kernel) {
  return [=] {
    VipsImage* resized = nullptr;
    if (vips_resize(picture(), &resized, static_cast<double>(width) / kWidth, "kernel", kernel, nullptr)) return;
    VipsImage* const pixels = vips_image_copy_memory(resized);
    keep(pixels);
    g_object_unref(pixels);
    g_object_unref(resized);
  };
}

[[maybe_unused]] const bool added[] = {
    add("resize cubic to 640x360", "libvips", scaling(640, VIPS_KERNEL_CUBIC)),
    add("resize cubic to 960x540", "libvips", scaling(960, VIPS_KERNEL_CUBIC)),
    add("resize Lanczos3 to 640x360", "libvips", scaling(640, VIPS_KERNEL_LANCZOS3)),
    add("resize Lanczos3 to 960x540", "libvips", scaling(960, VIPS_KERNEL_LANCZOS3)),
};

}  // namespace
}  // namespace qav::bench
