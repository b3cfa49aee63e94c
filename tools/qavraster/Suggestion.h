#pragma once

#include <string>
#include <vector>

namespace qavraster {

/// "; did you mean --gamma?" for the known name that is closest to `word`, or what to ask for when none is close.
std::string suggestion(const std::string& word, const std::vector<std::string>& known);

}  // namespace qavraster
