#pragma once

#include <string>
#include <vector>

#include "Argument.h"
#include "FileFormats.h"

namespace qavraster {

/// Something other than running operations over a picture: `qavraster NAME ARGUMENTS... [--SETTING ...]`.
struct Command {
  std::string name;
  std::vector<Argument> arguments;
  std::string help;
  /// The result is the exit code.
  int (*run)(const Values& values, const Settings& settings);
  std::vector<Setting> settings = {};  ///< beside those of the file formats
};

int showInfo(const Values& values, const Settings& settings);

const std::vector<Command>& commands();

}  // namespace qavraster
