#include "support/Comparison.h"
#include "support/Scenes.h"

#include <pixman.h>

namespace qav::bench {
namespace {

pixman_image_t* picture(const std::uint8_t* pixels) {
  auto* const bits = reinterpret_cast<std::uint32_t*>(const_cast<std::uint8_t*>(pixels));
  return pixman_image_create_bits(PIXMAN_a8b8g8r8, kWidth, kHeight, bits, kWidth * 4);
}

[[maybe_unused]] const bool added[] = {
    add("blend, and OVER", "pixman",
        [] {
          static pixman_image_t* const sources[] = {picture(nextBlendSource()), picture(nextBlendSource())};
          static pixman_image_t* const target = picture((new auto(photograph(kWidth, kHeight, 4)))->data());
          static int turn = 0;
          pixman_image_composite32(PIXMAN_OP_OVER, sources[turn ^= 1], nullptr, target, 0, 0, 0, 0, 0, 0, kWidth,
                                   kHeight);
        }),
};

}  // namespace
}  // namespace qav::bench
