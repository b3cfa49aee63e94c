#include "fuzz/g4_decode.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::g4_decode({data, size});
  return 0;
}
