#include "fuzz/read_rgb.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::read_rgb({data, size});
  return 0;
}
