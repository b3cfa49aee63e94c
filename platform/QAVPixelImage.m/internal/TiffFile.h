#pragma once

#include <tiffio.h>

#include <cstdint>
#include <cstdio>
#include <memory>

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffPtr = std::unique_ptr<TIFF, CloseTiff>;

/// What libtiff had to complain of; it prints nothing.
struct TiffLog {
  bool failed = false;
  bool warningsCount = false;  ///< some decoders only warn of damaged data
};

/// Opens a TIFF over the stream's file, or null. No single allocation of the library exceeds `largestAllocation`
/// bytes (0: no limit). `log` must outlive the result.
TiffPtr openTiff(std::FILE* file, const char* mode, std::uint64_t largestAllocation, TiffLog& log);
