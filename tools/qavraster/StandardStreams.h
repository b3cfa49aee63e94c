#pragma once

#include <string>

namespace qavraster {

/// "-" stands for standard input, or standard output.
inline bool isStandardStream(const std::string& path) { return path == "-"; }

/// The file as messages call it: in quotes, or the name of the stream.
std::string inputName(const std::string& path);
std::string outputName(const std::string& path);

/// A file with what the input holds: itself, or a copy of standard input, which is read once. Throws Failure.
std::string readablePath(const std::string& path);

/// Throws Failure when not all of the file arrives.
void copyToStandardOutput(const std::string& path);

}  // namespace qavraster
