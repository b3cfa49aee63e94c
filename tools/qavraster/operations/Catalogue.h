#pragma once

#include <string>
#include <vector>

#include "Argument.h"
#include "FileFormats.h"
#include "Image.h"

/// How to add to the program
///
/// An operation is one entry of a family's table, here all of an operation that takes one number:
///
///     {"brightness",
///      {number("AMOUNT", -1, 1, "fraction of full scale")},
///      "Adds AMOUNT to every selected channel.",
///      [](Context& c, const Values& v) {
///        c.require(QAVMMediaImageProcessor::Brightness(*c.image, v.real(0), c.channels(), c.progress, 1));
///      }},
///
/// `c.image` is the picture so far; an operation changes it in place or puts a new one there (`c.image.reset(...)`
/// takes the reference that Create operations return; `c.replace(...)` also refuses null). `c.require(status)` turns a
/// failing status into the message that names the operation and the image, and the formats in which the operation takes
/// a picture, which are found by trying; `c.fail("why")` says more. `c.progress` is
/// what a `void (*)(float)` parameter is given. `c.read(v.text(0))` makes a `file` argument an image. Argument.h has
/// the kinds of argument; their names are capitals, their ranges are checked before anything is read.
///
/// A setting holds for the operations after it, and for the one right before it that lists it as its own: a name,
/// arguments, help and the preset, in the family's second table. Read it with
/// `c.setting("dither-threshold").integer(0)`.
///
/// A family is a file operations/<Family>.cpp with one function that returns its tables; declare the function below
/// and add its line in Catalogue.cpp.
///
/// A file format is one entry in FileFormats.cpp: name, extensions, help, reader, writer, settings. A reader or
/// writer of more than a line goes into its own file formats/<Name>.cpp. Writers get the path of a temporary file,
/// so they may fail at any point.
///
/// A command (`qavraster info FILE`) is one entry in commands/Commands.cpp with its function in commands/<Name>.cpp.
///
/// Each operation, setting and format appears in `qavraster --list` by itself. Add a row to tests/tool/ where the
/// library's own tests cannot see a mistake: order of arguments, units, a changed size or format.
namespace qavraster {

/// What an operation works on.
struct Context {
  Image image;
  Settings settings;
  void (*progress)(float) = nullptr;
  std::string operation;  ///< as written on the command line, for messages

  const Values& setting(const std::string& name) const { return settings.at(name); }
  /// The mask of `--channels`.
  int channels() const { return setting("channels").integer(0); }
  void require(HRESULT status) const;
  /// Takes the new picture; null is a failure.
  void replace(QAVPixelImage* picture);
  /// The picture in another file.
  Image read(const std::string& path) const { return readImage(path, settings); }
  [[noreturn]] void fail(const std::string& reason) const;
  [[noreturn]] void refuse() const;
};

struct Operation {
  std::string name;
  std::vector<Argument> arguments;
  std::string help;
  void (*run)(Context& context, const Values& values);
  /// Settings that belong to this operation: they may also stand right behind it.
  std::vector<std::string> settings = {};
};

struct Family {
  std::string title;
  std::vector<Operation> operations;
  std::vector<Setting> settings = {};
};

Family pixelFormatFamily();
Family pointOperationFamily();
Family croppingFamily();
Family resamplingFamily();
Family colourFamily();
Family ditheringFamily();
Family drawingFamily();
Family filterFamily();

/// Every family, in the order of `--list`.
const std::vector<Family>& catalogue();
/// The settings of all families and file formats.
std::vector<Setting> allSettings();
/// Those settings with their presets.
Settings presets();

}  // namespace qavraster
