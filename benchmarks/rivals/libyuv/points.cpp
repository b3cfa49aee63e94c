#include "support/Comparison.h"

#include <libyuv.h>

namespace qav::bench {
namespace {

[[maybe_unused]] const bool added[] = {
    add("table RGBA, without alpha", "libyuv",
        [] {
          static std::vector<std::uint8_t> picture = photograph(kWidth, kHeight, 4);
          static const std::vector<std::uint8_t> table(4 * 256, 77);
          libyuv::RGBColorTable(picture.data(), kWidth * 4, table.data(), 0, 0, kWidth, kHeight);
        }),
};

}  // namespace
}  // namespace qav::bench
