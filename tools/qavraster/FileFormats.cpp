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
#include "StandardStreams.h"
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

const FileFormat* formatWith(const std::string& extension) {
  for (const FileFormat& format : fileFormats()) {
    if (std::find(format.extensions.begin(), format.extensions.end(), extension) != format.extensions.end())
      return &format;
  }
  return nullptr;
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw Failure("cannot read " + inputName(path) + ": " + reason);
}

// How the file begins.
std::string headOf(const std::string& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) refuse(path, "it is a folder");
  const std::string readable = readablePath(path);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(readable.c_str(), "rb"), &std::fclose);
  if (!file) refuse(path, std::strerror(errno));
  std::string head(8, '\0');
  head.resize(std::fread(head.data(), 1, head.size(), file.get()));
  return head;
}

// Calls `use` with a path that can be read, and puts the name of the file into what is wrong with it.
template <class Use>
auto reading(const std::string& path, Use use) {
  const std::string readable = readablePath(path);
  try {
    return use(readable);
  } catch (const UsageError& error) {
    throw UsageError("cannot read " + inputName(path) + ": " + error.what());
  } catch (const Failure& error) {
    refuse(path, error.what());
  }
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
      {"SGI",
       {".sgi", ".rgb"},
       "8 bits a channel; written as three or four channels",
       readSGI,
       writeSGI,
       {},
       {{"\x01\xDA\0\x01", 4}, {"\x01\xDA\x01\x01", 4}}},
      {"PostScript", {".ps"}, "a page of one point a pixel, 8 bits a channel", nullptr, writePostScript},
      {"EPS", {".eps"}, "as PostScript, for use within other pages", nullptr, writeEncapsulatedPostScript},
      group4Format(),
      blockRecordFormat(),
  };
  return all;
}

const FileFormat* inputFormat(const std::string& path, const Settings& settings) {
  const std::string head = headOf(path);
  for (const FileFormat& format : fileFormats()) {
    for (const std::string& signature : format.signatures)
      if (head.starts_with(signature)) return &format;
  }
  // Only Group 4 data has to be told its size.
  if (isStandardStream(path)) return settings.count("size") > 0 ? formatWith(".g4") : nullptr;
  return formatWith(extensionOf(path));
}

Image readImage(const std::string& path, const Settings& settings) {
  const FileFormat* format = inputFormat(path, settings);
  Image image = reading(path, [&](const std::string& readable) {
    return format && format->read ? format->read(readable, settings) : readByContent(readable, settings);
  });
  if (!image) refuse(path, "not an undamaged " + namesOfFormats(false) + " file");
  return image;
}

std::string inspectFile(const std::string& path, const FileFormat* format, const Settings& settings) {
  if (!format || !format->inspect) return "";
  return reading(path, [&](const std::string& readable) { return format->inspect(readable, settings); });
}

const FileFormat& outputFormat(const std::string& path, const std::string& type) {
  const FileFormat* format = formatWith(type.empty() ? extensionOf(path) : "." + type);
  if (format && format->write) return *format;
  const bool named = !isStandardStream(path);
  std::string known;
  for (const std::string& each : outputTypes()) known += (named ? " ." : " ") + each;
  if (!named) throw UsageError("standard output has no extension; give --format TYPE, one of" + known);
  throw UsageError("the output '" + path + "' has no known extension; give --format TYPE or one of" + known);
}

std::vector<std::string> outputTypes() {
  std::vector<std::string> types;
  for (const FileFormat& format : fileFormats()) {
    for (const std::string& extension : format.extensions)
      if (format.write) types.push_back(extension.substr(1));
  }
  return types;
}

}  // namespace qavraster
