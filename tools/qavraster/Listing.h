#pragma once

#include <string>
#include <vector>

#include "FileFormats.h"

namespace qavraster {

/// "BRIGHTNESS CONTRAST GAMMA".
std::string signature(const std::vector<Argument>& arguments);

/// `--format`, which chooses a type of file whatever the output is called.
Setting formatOption();

std::string helpText();
/// Every operation, setting, command and file format with its arguments and their ranges.
std::string listText();
std::string versionText();

}  // namespace qavraster
