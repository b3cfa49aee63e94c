#pragma once

#include "fuzz/MemoryFile.h"

#include <QAVPixelImage.h>

#include <cstdint>
#include <span>

namespace qav::fuzz {

/// Reads a picture and every pixel of it.
inline void readPicture(std::span<const std::uint8_t> input) {
  const MemoryFile file(input);
  QAVPixelImage* const image = QAVPixelImage::CreateFromFile(QAVString(file.path()), QAVReadOnly, 0);
  if (!image) return;
  int width = 0, height = 0;
  image->GetSize(width, height);
  expect(width > 0 && height > 0);
  if (QAVPixelImage* const colour = image->CreateConvertedCopy(RGBA8888)) colour->Release();
  image->Release();
}

inline void read_tiff(std::span<const std::uint8_t> input) { readPicture(input); }
inline void read_png(std::span<const std::uint8_t> input) { readPicture(input); }
inline void read_jpeg(std::span<const std::uint8_t> input) { readPicture(input); }

}  // namespace qav::fuzz
