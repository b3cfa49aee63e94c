#include "ImageFiles.h"
#include "PixelLayout.h"

#include <QAVPixelImage.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <new>

namespace {

using Reader = ImagePtr (*)(InputFile&);
using Writer = bool (*)(std::FILE*, const QAVPixelImage&);

struct FileType {
  const char* name;
  Writer write;
  QAVPixelImageFormat (*nearestFormat)(QAVPixelImageFormat);
  int largestSide;
};

QAVPixelImageFormat nearestTiffFormat(QAVPixelImageFormat format) { return format; }

QAVPixelImageFormat nearestPngFormat(QAVPixelImageFormat format) {
  if (format == BitonalRuns) return L8;
  if (format == RGBFloat) return RGB161616;
  return format == RGBAFloat ? RGBA16161616 : format;
}

QAVPixelImageFormat nearestJpegFormat(QAVPixelImageFormat format) {
  return format == L8 || format == LA88 || format == BitonalRuns ? L8 : RGB888;
}

constexpr FileType kFileTypes[] = {
    {"TIFF", writeTiff, nearestTiffFormat, 0x7FFFFFFF},
    {"PNG", writePng, nearestPngFormat, 0x7FFFFFFF},
    {"JPEG", writeJpeg, nearestJpegFormat, 65500},
};

const FileType* fileTypeOf(const char* name) {
  for (const FileType& type : kFileTypes)
    if (std::strcmp(type.name, name) == 0) return &type;
  return nullptr;
}

struct Signature {
  const char* bytes;
  std::size_t length;
  Reader read;
};

constexpr Signature kSignatures[] = {
    {"II*\0", 4, readTiff},
    {"MM\0*", 4, readTiff},
    {"II+\0", 4, readTiff},
    {"MM\0+", 4, readTiff},
    {"\x89PNG\r\n\x1A\n", 8, readPng},
    {"\xFF\xD8\xFF", 3, readJpeg},
};

Reader readerOf(std::FILE* file) {
  char start[8] = {};
  const std::size_t length = std::fread(start, 1, sizeof start, file);
  std::rewind(file);
  for (const Signature& signature : kSignatures)
    if (length >= signature.length && std::memcmp(start, signature.bytes, signature.length) == 0) return signature.read;
  return nullptr;
}

void removeFile(const char* path) {
  struct stat status {};
  if (lstat(path, &status) == 0 && S_ISREG(status.st_mode)) unlink(path);
}

}  // namespace

InputFile::InputFile(const QAVString& path) {
  // Not blocking: a pipe without a writer must not hold the caller.
  const int descriptor = open(path.ConvertToChar(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return;
  struct stat status {};
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) stream.reset(fdopen(descriptor, "rb"));
  if (!stream) close(descriptor);
  bytes = static_cast<std::uint64_t>(status.st_size);
}

bool isPlausiblePicture(std::uint64_t width, std::uint64_t height, std::uint64_t bitsPerPixel,
                        std::uint64_t fileBytes) {
  constexpr std::uint64_t kLargestSide = 0x7FFFFFFF, kExpansion = 2048;
  if (width == 0 || height == 0 || width > kLargestSide || height > kLargestSide) return false;
  return width * height <= fileBytes * kExpansion * 8 / bitsPerPixel;
}

QAVPixelImage* QAVPixelImage::CreateFromFile(const QAVString& path, QAVReadOnlyState, int) {
  try {
    InputFile file(path);
    const Reader read = file.stream ? readerOf(file.stream.get()) : nullptr;
    return read ? read(file).release() : nullptr;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

HRESULT QAVPixelImage::WriteToFile(const QAVString& path, const QAVString& format) const {
  const FileType* type = fileTypeOf(format.ConvertToChar());
  const ImageSize size = sizeOf(*this);
  if (!type || size.pixels() == 0 || !holdsPixels(*this)) return E_FAIL;
  if (size.width > type->largestSide || size.height > type->largestSide) return E_FAIL;
  ImagePtr converted;
  const QAVPixelImage* image = this;
  if (type->nearestFormat(GetFormat()) != GetFormat()) {
    converted.reset(CreateConvertedCopy(type->nearestFormat(GetFormat())));
    if (!converted) return E_FAIL;
    image = converted.get();
  }
  FilePtr file(std::fopen(path.ConvertToChar(), "w+be"));
  if (!file) return E_FAIL;
  bool written = false;
  try {
    written = type->write(file.get(), *image);
  } catch (const std::bad_alloc&) {
    removeFile(path.ConvertToChar());
    throw;
  }
  written = std::fclose(file.release()) == 0 && written;
  if (written) return S_OK;
  removeFile(path.ConvertToChar());
  return E_FAIL;
}
