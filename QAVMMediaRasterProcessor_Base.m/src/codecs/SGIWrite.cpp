#include <QAVSGIImageFile.h>

#include "codecs/SGIFile.h"
#include "kernels/ChannelPlanes.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

namespace {

using namespace qav::sgi;

constexpr int kWritten = 0;
constexpr int kNotOpened = 1;
constexpr int kNotComplete = 2;
constexpr int kNoPicture = -1;

// Readers of these files rely on this layout, not the published one: 255 stands at offset 24, where others have the
// file's name, and a picture of three channels has the dimension 2.
struct FileHeader {
  FileHeader(int width, int height, unsigned channels) {
    putBigEndian16(bytes, kMagic);
    bytes[3] = 1;  // byte a channel
    putBigEndian16(bytes + 4, channels == 4 ? 3 : 2);
    putBigEndian16(bytes + 6, static_cast<unsigned>(width));
    putBigEndian16(bytes + 8, static_cast<unsigned>(height));
    putBigEndian16(bytes + 10, channels);
    bytes[27] = 0xFF;
    bytes[40] = 'Q';
    bytes[41] = 'V';
  }
  std::uint8_t bytes[kHeaderSize] = {};
};

// What stands at the path is kept until it has been written over: to free the memory of a file and to get it back for
// one of the same size takes several times as long as filling it. A pipe that nobody reads is an error instead of a
// wait without end.
File openToReplace(const char* path) {
  const int descriptor = ::open(path, O_WRONLY | O_CREAT | O_NONBLOCK, 0666);
  if (descriptor < 0) return nullptr;
  ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
  File file = unbuffered(::fdopen(descriptor, "wb"));
  if (!file) ::close(descriptor);
  return file;
}

// Cuts off what an earlier, longer file has behind the last byte written.
bool endFile(std::FILE* file) {
  struct stat status {};
  if (::fstat(::fileno(file), &status) != 0) return false;
  const off_t end = ::ftello(file);
  return !S_ISREG(status.st_mode) || end == status.st_size || (end >= 0 && ::ftruncate(::fileno(file), end) == 0);
}

bool writeAll(std::FILE* file, const std::uint8_t* bytes, std::size_t count) {
  return std::fwrite(bytes, 1, count, file) == count;
}

bool writePlanes(std::FILE* file, const std::uint8_t* pixels, std::size_t count, unsigned channels) {
  const auto strip = std::make_unique_for_overwrite<std::uint8_t[]>(std::min(kStripSize, count));
  for (unsigned k = 0; k < channels; ++k) {
    for (std::size_t i = 0; i < count; i += kStripSize) {
      const std::size_t together = std::min(kStripSize, count - i);
      qav::kernels::channelPlanesKernels().extract(pixels + i * channels, static_cast<int>(channels),
                                                   static_cast<int>(k), together, strip.get());
      if (!writeAll(file, strip.get(), together)) return false;
    }
  }
  return true;
}

}  // namespace

int WriteRGB(const QAVString& path, const QAVPixelImage* image) {
  if (!image) return kNoPicture;
  OwnedImage copy;
  QAVPixelImageFormat format = image->GetFormat();
  if (format != RGB888 && format != RGBA8888) {
    format = format == LA88 ? RGBA8888 : RGB888;
    copy.reset(image->CreateConvertedCopy(format));
    image = copy.get();
  }
  const std::uint8_t* const pixels = image ? image->GetPixelsToRead() : nullptr;
  if (!pixels) return kNoPicture;
  int width = 0, height = 0;
  image->GetSize(width, height);
  const unsigned channels = format == RGBA8888 ? 4 : 3;
  const std::size_t count =
      width > 0 && height > 0 ? static_cast<std::size_t>(width) * static_cast<std::size_t>(height) : 0;

  const File file = openToReplace(path.ConvertToChar());
  if (!file) return kNotOpened;
  const FileHeader header(width, height, channels);
  const bool complete =
      writeAll(file.get(), header.bytes, sizeof header.bytes) && writePlanes(file.get(), pixels, count, channels);
  return endFile(file.get()) && complete ? kWritten : kNotComplete;
}
