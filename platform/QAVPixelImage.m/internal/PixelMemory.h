#pragma once

#include "LargePages.h"

/// A buffer made with `new[]`, its bytes unset.
inline unsigned char* newPixelBuffer(std::size_t bytes) {
  auto* const buffer = new unsigned char[bytes];
  adviseLargePages(buffer, bytes);
  return buffer;
}
