#pragma once

#include <string>
#include <vector>

#include "Argument.h"

namespace qavraster {

/// "BRIGHTNESS CONTRAST GAMMA".
std::string signature(const std::vector<Argument>& arguments);

std::string helpText();
/// Every operation, setting, command and file format with its arguments and their ranges.
std::string listText();
std::string versionText();

}  // namespace qavraster
