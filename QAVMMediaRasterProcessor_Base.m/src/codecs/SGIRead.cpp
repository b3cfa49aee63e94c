#include <QAVSGIImageFile.h>

#include "codecs/SGIRows.h"
#include "kernels/ChannelPlanes.h"

#include <PixelMemory.h>

#include <algorithm>
#include <limits>
#include <new>
#include <optional>

namespace {

using namespace qav::sgi;

QAVPixelImageFormat formatOf(const Header& header) {
  return header.channels == 1 ? L8 : header.channels == 4 ? RGBA8888 : RGB888;
}

// The tables of a run-length file are read before the picture is made, so they must be there.
bool isAcceptable(const Header& header, std::size_t pixelChannels, std::uint64_t fileSize) {
  constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
  if (header.width * header.height * pixelChannels > most) return false;
  return !header.coded || fileSize >= kHeaderSize + 8 * header.height * header.channels;
}

// Every byte is going to be written, so the picture is not cleared first.
OwnedImage makeImage(const Header& header, std::size_t pixelChannels) {
  std::unique_ptr<unsigned char[]> pixels(newPixelBuffer(header.width * header.height * pixelChannels));
  OwnedImage image(new QAVPixelImage(static_cast<int>(header.width), static_cast<int>(header.height), formatOf(header),
                                     pixels.get(), QAVDeallocatePixelsByImage));
  pixels.release();
  return image;
}

/// What reading needs besides the picture: the file's rows, and a strip of each channel.
struct WorkMemory {
  WorkMemory(std::FILE* file, const Header& header, std::size_t pixelChannels)
      : rows(file, header, pixelChannels),
        together(std::clamp<std::size_t>(kStripSize / std::max<std::size_t>(header.width, 1), 1, 65535)),
        strips(std::make_unique_for_overwrite<std::uint8_t[]>(pixelChannels * together * header.width)) {}

  RowReader rows;
  std::size_t together;  ///< rows of a strip
  std::unique_ptr<std::uint8_t[]> strips;
};

void readInterleaved(WorkMemory& work, const Header& header, std::size_t pixelChannels, std::uint8_t* pixels) {
  const std::size_t stripSize = work.together * header.width;
  std::uint8_t* planes[4];
  for (std::size_t k = 0; k < 4; ++k) planes[k] = work.strips.get() + std::min(k, pixelChannels - 1) * stripSize;
  for (std::size_t y = 0; y < header.height; y += work.together) {
    const std::size_t count = std::min(work.together, header.height - y);
    for (std::size_t k = 0; k < pixelChannels; ++k) work.rows.read(k, y, count, planes[k]);
    qav::kernels::channelPlanesKernels().interleave(planes, static_cast<int>(pixelChannels), count * header.width,
                                                    pixels + y * header.width * pixelChannels);
  }
}

// Memory that is short for the picture is the caller's exception, for anything else a failure of reading.
std::optional<WorkMemory> makeWorkMemory(std::FILE* file, const Header& header, std::size_t pixelChannels) {
  try {
    return std::optional<WorkMemory>(std::in_place, file, header, pixelChannels);
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

QAVPixelImage* readPicture(std::FILE* file, const Header& header, std::size_t pixelChannels) {
  auto work = makeWorkMemory(file, header, pixelChannels);
  if (!work) return nullptr;
  OwnedImage image = makeImage(header, pixelChannels);
  unsigned char* const pixels = image->GetPixelsToModify();
  if (!pixels || header.width == 0 || header.height == 0) return image.release();
  if (pixelChannels == 1)
    work->rows.read(0, 0, header.height, pixels);
  else
    readInterleaved(*work, header, pixelChannels, pixels);
  return image.release();
}

}  // namespace

QAVPixelImage* ReadRGB(const QAVString& path) {
  // Opening a pipe would wait for its other end.
  const FileStatus status(path.ConvertToChar());
  if (!status.isRegular) return nullptr;
  File file = unbuffered(std::fopen(path.ConvertToChar(), "rb"));
  if (!file) return nullptr;
  std::uint8_t head[12] = {};
  static_cast<void>(std::fread(head, 1, sizeof head, file.get()));  // what is missing is 0
  const Header header(head);
  if (header.magic != kMagic) {
    // The file stays open on purpose; callers know it.
    static_cast<void>(file.release());
    return nullptr;
  }
  const auto pixelChannels = static_cast<std::size_t>(formatOf(header)) + 1;
  if (!isAcceptable(header, pixelChannels, status.size)) return nullptr;
  return readPicture(file.get(), header, pixelChannels);
}
