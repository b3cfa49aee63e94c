#include "run/OutputFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Errors.h"
#include "StandardStreams.h"

namespace qavraster {
namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
  throw Failure("cannot write " + outputName(path) + ": " + reason);
}

// The file that a symbolic link leads to, so that writing through a link keeps the link.
std::string resolved(const std::string& path) {
  std::error_code error;
  const auto target = std::filesystem::canonical(path, error);
  return error ? path : target.string();
}

void refuseAllButFiles(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return;
  fail(path, S_ISDIR(status.st_mode) ? "it is a folder" : "it is not an ordinary file");
}

mode_t modeOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) return status.st_mode & 07777;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : path_(isStandardStream(path) ? path : resolved(path)) {
  const bool toStream = isStandardStream(path);
  if (!toStream) refuseAllButFiles(path_);
  temporary_.emplace(toStream ? temporaryBeginning() : path_);
  if (!*temporary_) fail(path, std::strerror(errno));
  if (!toStream) chmod(temporaryPath().c_str(), modeOf(path_));
}

void OutputFile::commit() {
  if (isStandardStream(path_))
    copyToStandardOutput(temporaryPath());
  else if (!temporary_->keepAs(path_))
    fail(path_, std::strerror(errno));
}

}  // namespace qavraster
