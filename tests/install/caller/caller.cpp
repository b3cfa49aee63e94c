#include <QAVMMediaRasterProcessor.h>

#include <cstdio>

int main() {
  QAVPixelImage image(2, 1, L8);
  image.GetPixelsToModify()[1] = 200;
  if (FAILED(QAVMMediaImageProcessor::Negative(image, QAVMMIChannelLuminance, nullptr, 1))) return 1;
  const unsigned char* pixels = image.GetPixelsToRead();
  std::printf("version %s: %d %d\n", QAVMMediaRasterProcessorVersion(), pixels[0], pixels[1]);
  return pixels[0] == 255 && pixels[1] == 55 ? 0 : 1;
}
