#include "support/Comparison.h"
#include "support/Scenes.h"

#include <libyuv.h>

namespace qav::bench {
namespace {

[[maybe_unused]] const bool added[] = {
    add("blend", "libyuv",
        [] {
          static std::vector<std::uint8_t> target = photograph(kWidth, kHeight, 4);
          libyuv::ARGBBlend(nextBlendSource(), kWidth * 4, target.data(), kWidth * 4, target.data(), kWidth * 4, kWidth,
                            kHeight);
        }),
};

}  // namespace
}  // namespace qav::bench
