#pragma once

#include <csetjmp>
#include <cstddef>
#include <cstdio>

#include <jpeglib.h>

/// Error manager of one libjpeg object. A fatal error jumps to `place`, so every function that sets the jump holds
/// nothing that needs destroying. Nothing is printed.
struct JpegErrors {
  jpeg_error_mgr manager;  ///< first, as libjpeg only knows this part
  std::jmp_buf place;
  bool damaged;  ///< a warning said that picture data are missing or wrong
};

/// Prepares `errors` and returns what the libjpeg object's `err` is set to.
jpeg_error_mgr* prepareJpegErrors(JpegErrors& errors);
