#include "OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "Errors.h"

namespace qavraster {
namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

// The file that a signal has to remove. Its bytes never change while the pointer is set.
const char* volatile removedBySignal = nullptr;

extern "C" void removeAndEnd(int signal) {
  if (const char* path = removedBySignal) unlink(path);
  std::signal(signal, SIG_DFL);
  raise(signal);
}

void removeOnSignals(const char* path) {
  removedBySignal = path;
  struct sigaction action {};
  action.sa_handler = removeAndEnd;
  for (const int number : kEndingSignals) {
    struct sigaction before {};
    // A signal that the caller has chosen to ignore (nohup) stays ignored.
    if (sigaction(number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
  }
}

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
  throw Failure("cannot write '" + path + "': " + reason);
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

OutputFile::OutputFile(const std::string& path) : path_(resolved(path)) {
  refuseAllButFiles(path_);
  temporary_ = path_ + ".XXXXXX";
  std::vector<char> name(temporary_.c_str(), temporary_.c_str() + temporary_.size() + 1);
  const int descriptor = mkstemp(name.data());
  if (descriptor < 0) fail(path, std::strerror(errno));
  temporary_ = name.data();
  removeOnSignals(temporary_.c_str());
  fchmod(descriptor, modeOf(path_));
  close(descriptor);
}

OutputFile::~OutputFile() {
  removedBySignal = nullptr;
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::commit() {
  if (std::rename(temporary_.c_str(), path_.c_str()) != 0) fail(path_, std::strerror(errno));
  removedBySignal = nullptr;
  temporary_.clear();
}

}  // namespace qavraster
