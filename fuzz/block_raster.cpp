#include "fuzz/block_raster.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::block_raster({data, size});
  return 0;
}
