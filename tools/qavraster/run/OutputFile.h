#pragma once

#include <optional>
#include <string>

#include "run/TemporaryFile.h"

namespace qavraster {

/// A file that appears completely or not at all: what is written goes to a temporary file in the same folder, which
/// commit() renames, or copies to standard output. Without a commit it is removed.
class OutputFile {
 public:
  /// Throws Failure, naming `path`, when no file can be made there. "-" is standard output.
  explicit OutputFile(const std::string& path);

  const std::string& temporaryPath() const { return temporary_->path(); }
  void commit();

 private:
  std::string path_;
  std::optional<TemporaryFile> temporary_;
};

}  // namespace qavraster
