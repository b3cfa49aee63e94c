#include "StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

#include "Errors.h"
#include "run/TemporaryFile.h"

namespace qavraster {
namespace {

class Descriptor {
 public:
  Descriptor(const std::string& path, int flags) : number_(open(path.c_str(), flags | O_CLOEXEC)) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  operator int() const { return number_; }

 private:
  int number_;
};

bool writeAll(int to, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(to, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

// False, with errno set, when not every byte could be read and written.
bool copy(int from, int to) {
  std::vector<char> buffer(1 << 16);
  if (from < 0 || to < 0) return false;
  for (;;) {
    const ssize_t count = read(from, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count == 0;
    if (!writeAll(to, buffer.data(), static_cast<std::size_t>(count))) return false;
  }
}

void spoolStandardInput(const TemporaryFile& file) {
  if (isatty(STDIN_FILENO)) throw Failure("cannot read standard input: it is a terminal; give a file or a pipe");
  if (!file || !copy(STDIN_FILENO, Descriptor(file.path(), O_WRONLY | O_TRUNC)))
    throw Failure(std::string("cannot read standard input into a temporary file: ") + std::strerror(errno));
}

}  // namespace

std::string inputName(const std::string& path) { return isStandardStream(path) ? "standard input" : "'" + path + "'"; }

std::string outputName(const std::string& path) {
  return isStandardStream(path) ? "standard output" : "'" + path + "'";
}

std::string readablePath(const std::string& path) {
  if (!isStandardStream(path)) return path;
  static const TemporaryFile file(temporaryBeginning());
  static bool spooled = false;
  if (!spooled) spoolStandardInput(file);
  spooled = true;
  return file.path();
}

void copyToStandardOutput(const std::string& path) {
  // A reader that goes away is an error like any other, and not the end of the program.
  std::signal(SIGPIPE, SIG_IGN);
  if (!copy(Descriptor(path, O_RDONLY), STDOUT_FILENO))
    throw Failure(std::string("cannot write standard output: ") + std::strerror(errno));
}

}  // namespace qavraster
