#include "fuzz/picture_files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qav::fuzz::read_tiff({data, size});
  return 0;
}
