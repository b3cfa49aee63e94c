#pragma once

#include <QAVPixelImageFormat.h>

#include <cstddef>

/// Converts `pixels` pixels from one format with a pixel buffer to another. The buffers do not overlap.
///
/// Grey from colour is (2126 R + 7152 G + 722 B + 5000) / 10000 on bytes; alpha is dropped or set to opaque. Samples
/// change their size by full scale: to bytes rounded, floating ones clamped to 0..1 first, not-a-number as 0. Grey
/// comes from colour that has been reduced to bytes.
void convertPixels(QAVPixelImageFormat from, const void* source, QAVPixelImageFormat to, void* destination,
                   std::size_t pixels);
