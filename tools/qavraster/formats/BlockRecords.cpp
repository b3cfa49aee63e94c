#include <QAVBlockRasterFile.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>

#include "Errors.h"
#include "FileFormats.h"

namespace qavraster {
namespace {

std::string meaning(int result) {
  switch (result) {
    case -2:
      return "an unknown kind of samples";
    case -4:
      return "no picture, or not all of it";
    default:
      return "its records are damaged or of a form that cannot be read";
  }
}

struct Header {
  int kind = 0;
  std::int64_t extent[2] = {};
};

[[noreturn]] void refuse(int result) { throw Failure(meaning(result)); }

Header readHeader(const std::string& path) {
  Header header;
  if (const int result = ripicrhd(path.c_str(), &header.kind, header.extent)) refuse(result);
  return header;
}

// Every band of rows, 262144 samples or a row of up to a million, takes two blocks of the file at least.
bool inProportion(const Header& header, std::uintmax_t fileSize) {
  constexpr std::int64_t most = 1 << 20, bandSamples = 262144, twoBlocks = 160;
  const auto [width, height] = header.extent;
  if (width < 1 || height < 1 || width > most || height > most) return false;
  const std::int64_t bandRows = std::max<std::int64_t>(1, bandSamples / width);
  return fileSize / twoBlocks >= static_cast<std::uintmax_t>((height + bandRows - 1) / bandRows);
}

Image read(const std::string& path, const Settings&) {
  Header header = readHeader(path);
  std::error_code error;
  if (!inProportion(header, std::filesystem::file_size(path, error)) || error) refuse(-4);
  Image image(new QAVPixelImage(static_cast<int>(header.extent[0]), static_cast<int>(header.extent[1]), RGB888));
  const std::int64_t origin[2] = {0, 0};
  const int result = ripicrdt(path.c_str(), &header.kind, origin, header.extent, image->GetPixelsToModify());
  if (result != 0) refuse(result);
  return image;
}

std::string inspect(const std::string& path, const Settings&) {
  const Header header = readHeader(path);
  return "extents " + std::to_string(header.extent[0]) + " x " + std::to_string(header.extent[1]) +
         ", read as RGB888, 3 channels of 8 bits";
}

}  // namespace

FileFormat blockRecordFormat() {
  return {"block-record", {".rip"}, "the first picture of the file, as RGB888", read, nullptr, {}, {}, inspect};
}

}  // namespace qavraster
