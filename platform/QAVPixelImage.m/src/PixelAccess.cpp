#include "PixelAccess.h"
#include "PixelLayout.h"
#include "PixelMemory.h"

ImagePtr makeUnfilledImage(int width, int height, QAVPixelImageFormat format) {
  if (pixelLayoutOf(format).channels == 0) return ImagePtr(new QAVPixelImage(width, height, format));
  std::unique_ptr<unsigned char[]> pixels(newPixelBuffer(pixelBytes(width, height, format)));
  ImagePtr image(new QAVPixelImage(width, height, format, pixels.get(), QAVDeallocatePixelsByImage));
  pixels.release();
  return image;
}

const unsigned char* pixelsToRead(const QAVPixelImage& image) {
  switch (pixelLayoutOf(image.GetFormat()).bytesPerChannel) {
    case 1:
      return image.GetPixelsToRead();
    case 2:
      return reinterpret_cast<const unsigned char*>(image.GetSixteenBitPixelsToRead());
    case 4:
      return reinterpret_cast<const unsigned char*>(image.GetFloatingPixelsToRead());
    default:
      return nullptr;
  }
}

unsigned char* pixelsToModify(QAVPixelImage& image) {
  switch (pixelLayoutOf(image.GetFormat()).bytesPerChannel) {
    case 1:
      return image.GetPixelsToModify();
    case 2:
      return reinterpret_cast<unsigned char*>(image.GetSixteenBitPixelsToModify());
    case 4:
      return reinterpret_cast<unsigned char*>(image.GetFloatingPixelsToModify());
    default:
      return nullptr;
  }
}

ImageSize sizeOf(const QAVPixelImage& image) {
  ImageSize size;
  image.GetSize(size.width, size.height);
  return size;
}

bool holdsPixels(const QAVPixelImage& image) {
  if (image.GetFormat() == BitonalRuns) return true;
  if (pixelLayoutOf(image.GetFormat()).channels == 0) return false;
  return pixelsToRead(image) || sizeOf(image).pixels() == 0;
}
