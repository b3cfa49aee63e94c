#include "run/TemporaryFile.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>

namespace qavraster {
namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

// The files that a signal has to remove: an output and a spooled input at most. The bytes of a name never change while
// its pointer is set.
const char* volatile removedBySignal[4] = {};

extern "C" void removeAndEnd(int signal) {
  for (const char* path : removedBySignal) {
    if (path) unlink(path);
  }
  std::signal(signal, SIG_DFL);
  raise(signal);
}

int removeOnSignals(const char* path) {
  struct sigaction action {};
  action.sa_handler = removeAndEnd;
  for (const int number : kEndingSignals) {
    struct sigaction before {};
    // A signal that the caller has chosen to ignore (nohup) stays ignored.
    if (sigaction(number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
  }
  for (std::size_t slot = 0; slot < std::size(removedBySignal); ++slot) {
    if (removedBySignal[slot]) continue;
    removedBySignal[slot] = path;
    return static_cast<int>(slot);
  }
  return -1;
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& beginning) : path_(beginning + ".XXXXXX") {
  const int descriptor = mkstemp(path_.data());
  if (descriptor < 0) {
    path_.clear();
    return;
  }
  slot_ = removeOnSignals(path_.c_str());
  close(descriptor);
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) unlink(path_.c_str());
  forget();
}

bool TemporaryFile::keepAs(const std::string& path) {
  if (std::rename(path_.c_str(), path.c_str()) != 0) return false;
  forget();
  return true;
}

void TemporaryFile::forget() {
  if (slot_ >= 0) removedBySignal[slot_] = nullptr;
  slot_ = -1;
  path_.clear();
}

std::string temporaryBeginning() {
  std::error_code error;
  const auto folder = std::filesystem::temp_directory_path(error);
  return ((error ? "/tmp" : folder) / "qavraster").string();
}

}  // namespace qavraster
