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
  /// Beside those of the file formats. One without a preset is among the settings only when it is given.
  std::vector<Setting> settings = {};
};

int showInfo(const Values& values, const Settings& settings);
/// 0 when no difference reaches the threshold, 1 when one does, 2 when the files cannot be compared.
int compareFiles(const Values& values, const Settings& settings);
std::vector<Setting> comparisonSettings();

const std::vector<Command>& commands();

}  // namespace qavraster
