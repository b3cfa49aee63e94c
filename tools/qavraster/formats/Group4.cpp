#include <CCITT.h>
#include <CCITT_G4.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>

#include "Errors.h"
#include "FileFormats.h"

namespace qavraster {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::size_t bytesFor(std::size_t bits) { return (bits + 7) / 8; }

// Copies a run of bits between bitmaps, most significant bit first, into zeros.
void copyBits(const unsigned char* from, std::size_t fromBit, unsigned char* to, std::size_t toBit, std::size_t count) {
  for (; count > 0; --count, ++fromBit, ++toBit) {
    const bool black = from[fromBit / 8] >> (7 - fromBit % 8) & 1;
    to[toBit / 8] = static_cast<unsigned char>(to[toBit / 8] | black << (7 - toBit % 8));
  }
}

struct Page {
  Size size;
  Bytes bitmap;
  int rows = 0, error = 0;
};

Page decode(const std::string& path, const Settings& settings) {
  const auto given = settings.find("size");
  if (given == settings.end()) throw UsageError("Group 4 data does not hold its size; give --size WIDTHxHEIGHT");
  Page page;
  page.size = given->second.size(0);
  const Bytes coded = contentOf(path);
  const std::size_t bytes =
      bytesFor(static_cast<std::size_t>(page.size.width) * static_cast<std::size_t>(page.size.height));
  if (std::max(bytes, coded.size()) > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    throw Failure("it is too large");
  page.bitmap.resize(bytes);
  int size[2] = {page.size.width, page.size.height};
  CCITT_G4_dec(coded.data(), static_cast<int>(coded.size()), size, page.bitmap.data(), page.rows, page.error);
  return page;
}

std::string meaning(int error) {
  switch (error) {
    case 14601:
      return "a code that does not exist";
    case 14901:
      return "the data ends inside a row";
    case 14602:
      return "the end code does not follow the last row";
    default:
      return "it is empty";
  }
}

std::string inspect(const std::string& path, const Settings& settings) {
  if (settings.find("size") == settings.end())
    return std::to_string(contentOf(path).size()) +
           " bytes, 1 channel of 1 bit; with --size WIDTHxHEIGHT it is decoded";
  const Page page = decode(path, settings);
  std::string text = std::to_string(page.size.width) + " x " + std::to_string(page.size.height) +
                     ", 1 channel of 1 bit, " + std::to_string(page.rows) + " rows decoded";
  return page.error == 0 ? text : text + ": " + meaning(page.error);
}

Image read(const std::string& path, const Settings& settings) {
  const Page page = decode(path, settings);
  if (page.error != 0) throw Failure("nothing beyond row " + std::to_string(page.rows) + ": " + meaning(page.error));
  const auto width = static_cast<std::size_t>(page.size.width);
  Image image(new QAVPixelImage(page.size.width, page.size.height, BitonalRuns));
  for (int y = 0; y < page.size.height; ++y) {
    Bytes row(bytesFor(width));
    copyBits(page.bitmap.data(), static_cast<std::size_t>(y) * width, row.data(), 0, width);
    image->GetPixelsRunsLength(y) =
        CCITT::encode(image->GetPixelsRuns(y), row.data(), static_cast<unsigned>(page.size.width));
  }
  return image;
}

Bytes bitmapOf(const QAVPixelImage& image, int width, int height) {
  Bytes bitmap(bytesFor(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)));
  for (int y = 0; y < height; ++y) {
    Bytes row(bytesFor(static_cast<std::size_t>(width)));
    CCITT::decode(row.data(), image.GetPixelsRuns(y), static_cast<unsigned>(image.GetPixelsRunsLength(y)),
                  static_cast<unsigned>(width));
    copyBits(row.data(), 0, bitmap.data(), static_cast<std::size_t>(y) * static_cast<std::size_t>(width),
             static_cast<std::size_t>(width));
  }
  return bitmap;
}

// Empty when it cannot be coded. Noise takes several bits a pixel, so there is no knowing the room before.
Bytes encode(const Bytes& bitmap, int width, int height) {
  int size[2] = {width, height}, length = 0, error = 0;
  for (std::size_t room = bitmap.size() / 4 + 1024; room <= std::size_t{std::numeric_limits<int>::max()}; room *= 4) {
    Bytes coded(room);
    int capacity = static_cast<int>(room);
    const int result = CCITT_G4_enc(bitmap.data(), size, capacity, coded.data(), length, error);
    constexpr int doesNotFit = 14900;
    if (result != 0 && error == doesNotFit) continue;
    coded.resize(static_cast<std::size_t>(length));
    return coded;
  }
  return {};
}

bool write(const QAVPixelImage& image, const std::string& path, const Settings&) {
  const Image bitonal(image.CreateConvertedCopy(BitonalRuns));
  if (!bitonal) return false;
  int width = 0, height = 0;
  bitonal->GetSize(width, height);
  if (width <= 0 || height <= 0) return false;
  const Bytes coded = encode(bitmapOf(*bitonal, width, height), width, height);
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(coded.data()), static_cast<std::streamsize>(coded.size()));
  file.close();
  return !coded.empty() && file.good();
}

}  // namespace

FileFormat group4Format() {
  return {"Group 4", {".g4"}, "bitonal rows as ITU-T T.6 codes and nothing else; other pictures are made bitonal",
          read,      write,   {{"size", {size("SIZE")}, "Size of a Group 4 input, which the file does not hold.", {}}},
          {},        inspect};
}

}  // namespace qavraster
