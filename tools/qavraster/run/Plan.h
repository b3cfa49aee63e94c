#pragma once

#include <string>
#include <vector>

#include "FileFormats.h"

namespace qavraster {

/// One picture to make.
struct Job {
  std::string input, output;
  const FileFormat* format = nullptr;
};

/// What `pattern` and `type` make of the inputs: {name} becomes the input's name without folder and extension, {ext}
/// its extension without the dot, {index} its number from 1, {{ and }} braces.
///
/// Everything that is wrong before a picture is looked at is said here. Throws UsageError for a placeholder or a type
/// that does not exist, two inputs with one output, an output of several or of a pattern that is an input too, and for
/// standard output that is a terminal; Failure for a folder that is not there.
std::vector<Job> planned(const std::vector<std::string>& inputs, const std::string& pattern, const std::string& type);

}  // namespace qavraster
