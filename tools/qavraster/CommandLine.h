#pragma once

#include <string>
#include <vector>

#include "commands/Commands.h"
#include "operations/Catalogue.h"

namespace qavraster {

/// One operation or setting as it stands on the command line, in order.
struct Step {
  std::string text;                      ///< "--brightness 0.2"
  const Operation* operation = nullptr;  ///< null for a setting
  std::string setting;
  Values values;
};

/// What the command line asks for.
struct Invocation {
  enum class Kind { Run, Command, Finished };

  Kind kind = Kind::Run;
  std::vector<std::string> inputs;
  std::string output, format;
  bool verbose = false;
  std::vector<Step> steps;
  const Command* command = nullptr;
  Values values;
  Settings settings;  ///< of a command
};

/// Throws UsageError, with the wrong argument named. Help, list and version are printed here: Finished.
Invocation parseCommandLine(int argc, const char* const* argv);

}  // namespace qavraster
