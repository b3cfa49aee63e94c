#include "fuzz/print_decoders.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::run_length_decode({data, size});
  return 0;
}
