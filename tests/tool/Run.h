#pragma once

#include "support/Images.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace qav::test {

inline std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::filesystem::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

inline Image readBack(const std::string& path) {
  return Image(QAVPixelImage::CreateFromFile(path.c_str(), QAVReadOnly, 0));
}

/// A folder of its own for each test, gone at the end.
class Folder {
 public:
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "qavraster-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string operator/(const std::string& name) const { return (path_ / name).string(); }
  std::vector<std::string> files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) names.push_back(entry.path().filename());
    return names;
  }

 private:
  std::filesystem::path path_;
};

struct Outcome {
  int code = -1;  ///< exit code, or the negative number of the signal that ended the program
  std::string out, err;
  long peakKilobytes = 0;
};

/// Starts the program; `prepare` runs in the new process.
inline pid_t start(const std::vector<std::string>& arguments, const Folder& logs,
                   const std::function<void()>& prepare = {}) {
  std::vector<char*> argv{const_cast<char*>(QAV_TOOL)};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const std::string out = logs / "out", err = logs / "err";
  // fork and not posix_spawn: the child's peak memory must not start from this process's own.
  const pid_t child = fork();
  if (child != 0) return child;
  dup2(open(out.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600), STDOUT_FILENO);
  dup2(open(err.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600), STDERR_FILENO);
  if (prepare) prepare();
  execv(argv[0], argv.data());
  _exit(127);
}

inline Outcome finish(pid_t child, const Folder& logs) {
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return {code, contentOf(logs / "out"), contentOf(logs / "err"), usage.ru_maxrss};
}

inline Outcome run(const std::vector<std::string>& arguments, const std::function<void()>& prepare = {}) {
  const Folder logs;
  return finish(start(arguments, logs, prepare), logs);
}

/// The words between single spaces; spaces between single quotes belong to a word.
inline std::vector<std::string> words(const std::string& line) {
  std::vector<std::string> all;
  bool quoted = false, inside = false;
  for (const char letter : line) {
    const bool ends = letter == ' ' && !quoted;
    if (letter == '\'') quoted = !quoted;
    if (!ends && !inside) all.emplace_back();
    inside = !ends;
    if (inside && letter != '\'') all.back() += letter;
  }
  return all;
}

}  // namespace qav::test
