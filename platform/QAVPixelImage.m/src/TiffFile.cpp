#include "TiffFile.h"

#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <limits>

namespace {

struct FreeOptions {
  void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

// A result other than 0 keeps the message from the process-wide handlers.
int noteError(TIFF*, void* log, const char*, const char*, va_list) {
  static_cast<TiffLog*>(log)->failed = true;
  return 1;
}

int noteWarning(TIFF*, void* log, const char*, const char*, va_list) {
  auto& noted = *static_cast<TiffLog*>(log);
  noted.failed = noted.failed || noted.warningsCount;
  return 1;
}

}  // namespace

TiffPtr openTiff(std::FILE* file, const char* mode, std::uint64_t largestAllocation, TiffLog& log) {
  const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
  if (!options) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), noteError, &log);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), noteWarning, &log);
  constexpr std::uint64_t kMost = std::numeric_limits<tmsize_t>::max();
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(std::min(largestAllocation, kMost)));
  const int descriptor = dup(fileno(file));  // closing the TIFF closes its descriptor
  if (descriptor < 0) return nullptr;
  lseek(descriptor, 0, SEEK_SET);
  TIFF* tiff = TIFFFdOpenExt(descriptor, "", mode, options.get());
  if (!tiff) close(descriptor);
  return TiffPtr(tiff);
}
