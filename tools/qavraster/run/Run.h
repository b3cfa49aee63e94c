#pragma once

#include "CommandLine.h"

namespace qavraster {

/// Makes the pictures that the command line asks for. One that fails is an error; of several the others are still
/// made, and the exit code is 1.
int runOperations(const Invocation& invocation);

}  // namespace qavraster
