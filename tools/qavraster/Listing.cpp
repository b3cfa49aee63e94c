#include "Listing.h"

#include <QAVMMediaRasterVersion.h>

#include "commands/Commands.h"
#include "operations/Catalogue.h"

namespace qavraster {
namespace {

std::string entry(const std::string& name, const std::vector<Argument>& arguments, const std::string& help) {
  const std::string names = signature(arguments);
  std::string lines = "  " + name + (names.empty() ? "" : " " + names) + "\n      " + help + "\n";
  for (const Argument& argument : arguments) lines += "      " + argument.name + ": " + describe(argument) + "\n";
  return lines;
}

std::string entry(const Setting& setting) {
  std::string preset;
  for (const std::string& value : setting.preset) preset += " " + value;
  if (!preset.empty()) preset = " Unless given:" + preset + ".";
  return entry("--" + setting.name, setting.arguments, setting.help + preset);
}

std::string familyText(const Family& family) {
  std::string lines = family.title + "\n";
  for (const Setting& setting : family.settings) lines += entry(setting);
  for (const Operation& operation : family.operations)
    lines += entry("--" + operation.name, operation.arguments, operation.help);
  return lines + "\n";
}

std::string formatText(const FileFormat& format) {
  std::string lines = "  " + format.name + " (";
  for (const std::string& extension : format.extensions)
    lines += (&extension == &format.extensions.front() ? "" : " ") + extension;
  const char* use = format.read && format.write ? "read and written" : format.read ? "read" : "written";
  lines += "), " + std::string(use) + ": " + format.help + "\n";
  for (const Setting& setting : format.settings) lines += entry(setting);
  return lines;
}

}  // namespace

std::string signature(const std::vector<Argument>& arguments) {
  std::string names;
  for (const Argument& argument : arguments) names += (names.empty() ? "" : " ") + argument.name;
  return names;
}

Setting formatOption() {
  Choices types;
  for (const std::string& type : outputTypes()) types.push_back({type, 0});
  return {"format", {choice("TYPE", types)}, "Type of the output, whatever its extension.", {}};
}

std::string helpText() {
  std::string text =
      "qavraster INPUT... [OPERATION]... -o OUTPUT [--format TYPE] [--verbose]\n"
      "  Applies the operations to each picture in the order written. The output's extension decides its type, or "
      "--format.\n"
      "  For several inputs the output is a pattern with {name}, {ext} or {index}. - is standard input or output.\n";
  for (const Command& command : commands())
    text += "qavraster " + command.name + " " + signature(command.arguments) + "\n  " + command.help + "\n";
  return text +
         "qavraster --list\n  Shows every operation with its arguments and their ranges.\n"
         "qavraster --version\n  Prints the version and the instruction set in use.\n"
         "\nExamples:\n"
         "  qavraster photo.jpg --brightness 0.1 --channels r --posterize 4 -o poster.png\n"
         "  qavraster *.png --resize 640x360 -o 'small/{name}.png'\n"
         "  qavraster - --grey luma -o - --format png < photo.jpg > grey.png\n";
}

namespace {

std::string optionsText() {
  const Argument output = text(
      "OUTPUT",
      "a file, - for standard output, or a pattern: {name} and {ext} of the input, its {index}, {{ and }} for braces");
  return "Options\n" + entry("-o, --output", {output}, "What to write.") + entry(formatOption()) +
         entry("-v, --verbose", {}, "Prints on standard error how long reading, writing and each operation take.") +
         "\n";
}

}  // namespace

std::string listText() {
  std::string text =
      "Operations are applied in the order written. A setting holds for the operations after it; one that belongs to "
      "an operation may also stand right behind it.\n\n";
  text += optionsText();
  for (const Family& family : catalogue()) text += familyText(family);
  text += "Commands\n";
  for (const Command& command : commands()) {
    text += entry(command.name, command.arguments, command.help);
    for (const Setting& setting : command.settings) text += entry(setting);
  }
  text += "\nFiles\n";
  for (const FileFormat& format : fileFormats()) text += formatText(format);
  return text;
}

std::string versionText() {
  return std::string("qavraster ") + QAVMMediaRasterProcessorVersion() +
         "\ninstruction set: " + QAVMMediaRasterProcessorInstructionSet() + "\n";
}

}  // namespace qavraster
