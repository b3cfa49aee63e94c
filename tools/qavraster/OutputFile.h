#pragma once

#include <string>

namespace qavraster {

/// A file that appears completely or not at all: what is written goes to a temporary file in the same folder, which
/// commit() renames. Without a commit it is removed, also when SIGINT, SIGTERM or SIGHUP ends the program.
class OutputFile {
 public:
  /// Throws Failure, naming `path`, when no file can be made there.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::string& temporaryPath() const { return temporary_; }
  void commit();

 private:
  std::string path_;
  std::string temporary_;
};

}  // namespace qavraster
