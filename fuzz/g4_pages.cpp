#include "fuzz/g4_pages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::g4_pages({data, size});
  return 0;
}
