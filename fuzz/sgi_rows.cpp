#include "fuzz/sgi_rows.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::sgi_rows({data, size});
  return 0;
}
