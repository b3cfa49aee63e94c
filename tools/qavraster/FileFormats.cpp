#include "FileFormats.h"

#include <QAVSGIImageFile.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "Errors.h"
#include "formats/Formats.h"

namespace qavraster {
namespace {

Image readByContent(const std::string& path, const Settings&) {
  return Image(QAVPixelImage::CreateFromFile(QAVString(path), QAVReadWrite, 0));
}

template <const char* const& name>
bool writeAs(const QAVPixelImage& image, const std::string& path, const Settings&) {
  return SUCCEEDED(image.WriteToFile(QAVString(path), name));
}

constexpr const char* kTiff = "TIFF";
constexpr const char* kPng = "PNG";
constexpr const char* kJpeg = "JPEG";

Image readSGI(const std::string& path, const Settings&) { return Image(ReadRGB(QAVString(path))); }

bool writeSGI(const QAVPixelImage& image, const std::string& path, const Settings&) {
  return WriteRGB(QAVString(path), &image) == 0;
}

std::string extensionOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

const FileFormat* formatOf(const std::string& path) {
  const std::string extension = extensionOf(path);
  for (const FileFormat& format : fileFormats()) {
    if (std::find(format.extensions.begin(), format.extensions.end(), extension) != format.extensions.end())
      return &format;
  }
  return nullptr;
}

// How the file begins.
std::string headOf(const std::string& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) throw Failure("cannot read '" + path + "': it is a folder");
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (!file) throw Failure("cannot read '" + path + "': " + std::strerror(errno));
  std::string head(8, '\0');
  head.resize(std::fread(head.data(), 1, head.size(), file.get()));
  return head;
}

std::string namesOfFormats(bool written) {
  std::string names;
  for (const FileFormat& format : fileFormats()) {
    if (written ? format.write != nullptr : format.read != nullptr) names += (names.empty() ? "" : ", ") + format.name;
  }
  return names;
}

}  // namespace

const std::vector<FileFormat>& fileFormats() {
  static const std::vector<FileFormat> all = {
      {"TIFF",
       {".tif", ".tiff"},
       "every pixel format; bitonal as Group 4",
       readByContent,
       writeAs<kTiff>,
       {},
       {{"II*\0", 4}, {"MM\0*", 4}, {"II+\0", 4}, {"MM\0+", 4}}},
      {"PNG", {".png"}, "8 and 16 bits a channel", readByContent, writeAs<kPng>, {}, {"\x89PNG"}},
      {"JPEG",
       {".jpg", ".jpeg"},
       "8 bits a channel, quality 95, no alpha",
       readByContent,
       writeAs<kJpeg>,
       {},
       {"\xFF\xD8\xFF"}},
      {"SGI", {".sgi", ".rgb"}, "8 bits a channel; written as three or four channels", readSGI, writeSGI},
      {"PostScript", {".ps"}, "a page of one point a pixel, 8 bits a channel", nullptr, writePostScript},
      {"EPS", {".eps"}, "as PostScript, for use within other pages", nullptr, writeEncapsulatedPostScript},
      group4Format(),
      blockRecordFormat(),
  };
  return all;
}

const FileFormat* inputFormat(const std::string& path) {
  const std::string head = headOf(path);
  for (const FileFormat& format : fileFormats()) {
    for (const std::string& signature : format.signatures)
      if (head.starts_with(signature)) return &format;
  }
  return formatOf(path);
}

Image readImage(const std::string& path, const Settings& settings) {
  const FileFormat* format = inputFormat(path);
  Image image = format && format->read ? format->read(path, settings) : readByContent(path, settings);
  if (!image) throw Failure("cannot read '" + path + "': not an undamaged " + namesOfFormats(false) + " file");
  return image;
}

const FileFormat& outputFormat(const std::string& path) {
  const FileFormat* format = formatOf(path);
  if (format && format->write) return *format;
  std::string known;
  for (const FileFormat& each : fileFormats()) {
    if (!each.write) continue;
    for (const std::string& extension : each.extensions) known += " " + extension;
  }
  throw UsageError("the output '" + path + "' has no known extension; give one of" + known);
}

}  // namespace qavraster
