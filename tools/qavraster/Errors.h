#pragma once

#include <new>
#include <stdexcept>
#include <string>

namespace qavraster {

/// The command line asks for something that does not exist; the text says what would be right. Exit code 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A file or an operation failed; the text names it. Exit code 1.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The library does not take the picture as it is.
struct Refusal : Failure {
  using Failure::Failure;
};

inline std::string messageOf(const std::exception& error) {
  return dynamic_cast<const std::bad_alloc*>(&error) ? "not enough memory for this picture" : error.what();
}

}  // namespace qavraster
