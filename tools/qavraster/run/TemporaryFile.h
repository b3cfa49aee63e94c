#pragma once

#include <string>

namespace qavraster {

/// A new empty file, removed when the object goes, also when SIGINT, SIGTERM or SIGHUP ends the program.
class TemporaryFile {
 public:
  /// Its name is `beginning` and a few characters more. errno says why when there is none.
  explicit TemporaryFile(const std::string& beginning);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  explicit operator bool() const { return !path_.empty(); }
  const std::string& path() const { return path_; }
  /// Makes it the file `path`, which stays. False, with errno set, when that cannot be.
  bool keepAs(const std::string& path);

 private:
  void forget();

  std::string path_;
  int slot_ = -1;
};

/// Beginning of the names of files that are not beside anything.
std::string temporaryBeginning();

}  // namespace qavraster
