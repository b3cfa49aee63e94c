#pragma once

#include "PixelAccess.h"
#include "PixelLayout.h"
#include "support/Images.h"

#include <cmath>
#include <iterator>

namespace qav::test {

/// Random image of any format that holds pixels. Floating samples include every kind of oddity.
inline Image randomImageOf(QAVPixelImageFormat format, int width, int height, std::mt19937& random) {
  if (format == BitonalRuns) return Image(randomImage(width, height, L8, random)->CreateConvertedCopy(format));
  Image image = makeImage(width, height, format);
  fill(pixelsToModify(*image), byteCount(*image), Texture::Noise, random);
  const float odd[] = {-1.0f, 0.0f, 1.0f, 2.0f, 0.5f, 0.49999997f, 1e-30f, 1e30f, NAN, INFINITY, -INFINITY};
  if (float* samples = image->GetFloatingPixelsToModify())
    for (std::size_t i = 0; i < byteCount(*image) / sizeof(float); ++i)
      samples[i] = random() % 8 ? static_cast<float>(random() % 65536) / 65535.0f : odd[random() % std::size(odd)];
  return image;
}

/// The pixel memory of an image, whatever the size of its samples; a bilevel image as luminance.
inline std::vector<std::uint8_t> memoryOf(const QAVPixelImage& image) {
  if (image.GetFormat() == BitonalRuns) return bytesOf(*Image(image.CreateConvertedCopy(L8)));
  const unsigned char* pixels = pixelsToRead(image);
  return {pixels, pixels + byteCount(image)};
}

}  // namespace qav::test
