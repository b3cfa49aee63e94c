#pragma once

#include <cstdint>
#include <vector>

namespace qav::bench {

/// A bitonal page at 300 dots an inch, A4, 1 = black, covered with lines of text-like marks. Rows take whole bytes.
inline constexpr int kPageWidth = 2480;
inline constexpr int kPageHeight = 3508;
const std::vector<std::uint8_t>& textPage();

}  // namespace qav::bench
