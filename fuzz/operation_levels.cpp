#include "fuzz/operation_levels.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::operation_levels({data, size});
  return 0;
}
