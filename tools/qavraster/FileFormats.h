#pragma once

#include <string>
#include <vector>

#include "Argument.h"
#include "Image.h"

namespace qavraster {

/// A setting that holds from where it stands on the command line: its name, its arguments, and what they are when it
/// is not given. Without a preset it is missing from Settings until it is given.
struct Setting {
  std::string name;
  std::vector<Argument> arguments;
  std::string help;
  std::vector<std::string> preset;
};

/// A kind of file. Its settings are options of the command line like any other.
struct FileFormat {
  std::string name;
  std::vector<std::string> extensions;  ///< in lower case, with the dot
  std::string help;
  /// Null when such files are not read, or not written. A reader gives null, or throws the reason
  /// without the file's name, and a writer gives false, on failure.
  Image (*read)(const std::string& path, const Settings& settings);
  bool (*write)(const QAVPixelImage& image, const std::string& path, const Settings& settings);
  std::vector<Setting> settings = {};
  /// How such files begin: one that does is of this format whatever its name.
  std::vector<std::string> signatures = {};
  /// What `qavraster info` says of a file after its format; null: of the picture in it.
  std::string (*inspect)(const std::string& path, const Settings& settings) = nullptr;
};

/// Raw Group 4 data; block-record files.
FileFormat group4Format();
FileFormat blockRecordFormat();

/// Every file format; how to add one stands in operations/Catalogue.h.
const std::vector<FileFormat>& fileFormats();

/// The format of a file that is there: by how it begins, otherwise by its extension; of standard input with a size
/// that no signature fits, Group 4. Null when neither is known. Throws Failure for a file that cannot be read at all.
const FileFormat* inputFormat(const std::string& path, const Settings& settings);
/// The image in `path`. Throws Failure, or UsageError when a setting is missing.
Image readImage(const std::string& path, const Settings& settings);
/// What the format's own inspection says of the file; empty when it has none.
std::string inspectFile(const std::string& path, const FileFormat* format, const Settings& settings);
/// The format that is written: the one of `type`, an extension without its dot, or, when that is empty, the one that
/// the output's extension stands for. Throws UsageError, with the known ones named.
const FileFormat& outputFormat(const std::string& path, const std::string& type);
/// What `type` may be.
std::vector<std::string> outputTypes();

}  // namespace qavraster
