#include "fuzz/block_records.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::block_records({data, size});
  return 0;
}
