#pragma once

#include <QAVPixelImage.h>
#include <QAVResult.h>

#include <cstdint>

namespace qav {

/// Reverses the pixels of every row. E_FAIL without pixels or for a size below 1, E_NOTIMPL for pixels of more than
/// four bytes.
HRESULT ReversePixelsInRows(unsigned char* pixels, int width, int height, int bytesPerPixel);

/// Reverses the order of the rows. E_FAIL without pixels or for a size below 1.
HRESULT SwapRows(unsigned char* pixels, std::int64_t rowBytes, int height);

/// Both together, as if one came after the other.
HRESULT ReversePixels(unsigned char* pixels, int width, int height, int bytesPerPixel);

/// Mirrors the coded rows of a `BitonalRuns` image left to right. Rows whose width is no multiple of 8 are shifted by
/// width mod 8 bits, over the first (size + 7) / 8 of their size bytes.
HRESULT MirrorRunRows(QAVPixelImage& image);

}  // namespace qav
