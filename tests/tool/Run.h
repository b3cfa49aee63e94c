#pragma once

#include "support/Files.h"
#include "support/Images.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <thread>

namespace qav::test {

inline Image readBack(const std::string& path) {
  return Image(QAVPixelImage::CreateFromFile(path.c_str(), QAVReadOnly, 0));
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

struct Outcome {
  int code = -1;  ///< exit code, or the negative number of the signal that ended the program
  std::string out, err;
  long peakKilobytes = 0;
};

inline void from(const char* path, int descriptor) { dup2(open(path, O_RDWR), descriptor); }

/// The program in a folder of its own, where its temporary files would be left too.
class Workplace {
 public:
  using Prepare = std::function<void()>;  ///< what the new process does before it becomes the program

  Workplace() {
    // Pictures that differ, so that one written under another's name is found.
    for (int i = 0; i < 5; ++i) {
      const Image image = makeImage(3 + i, 2, RGB888);
      std::fill_n(image->GetPixelsToModify(), 3, static_cast<unsigned char>(40 * i));
      for (const char* type : {"PNG", "TIFF"}) {
        const std::string name = std::string(1, static_cast<char>('a' + i)) + (type[0] == 'P' ? ".png" : ".tif");
        EXPECT_EQ(image->WriteToFile((*this / name).c_str(), type), S_OK);
      }
    }
    write("bad.png", "no picture");
    std::filesystem::copy_file(QAV_TEST_CARD, *this / "card.png");
    std::filesystem::create_directory(*this / "out");
    std::filesystem::create_symlink("out", *this / "link");
  }

  std::string operator/(const std::string& name) const { return folder_.path(name); }
  void write(const std::string& name, const std::string& content) const { folder_.write(name, content); }
  std::string read(const std::string& name) const { return readFile<std::string>(*this / name); }
  std::size_t count() const { return folder_.count(); }
  std::vector<std::string> made() const {
    auto names = folder_.filesIn("out");
    std::sort(names.begin(), names.end());
    return names;
  }

  Outcome operator()(const std::string& arguments, const Prepare& prepare = {}) const {
    return finish(start(arguments, prepare));
  }

  /// Ends the program while it waits for its input, when it has begun its file in the folder out and `files` are here.
  Outcome stopped(const std::string& arguments, int signal, std::size_t files, const Prepare& prepare = {}) const {
    const pid_t child = start(arguments, [&] {
      // Whoever runs the tests may ignore these signals, and what is ignored stays so.
      for (const int each : {SIGINT, SIGTERM, SIGHUP}) std::signal(each, SIG_DFL);
      if (prepare) prepare();
    });
    const auto waiting = [&] { return made().size() == 1 && count() == files; };
    for (int i = 0; i < 1000 && !waiting(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(waiting());
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    kill(child, signal);
    return finish(child);
  }

 private:
  pid_t start(const std::string& arguments, const Prepare& prepare) const {
    auto all = words(arguments);
    std::vector<char*> argv{const_cast<char*>(QAV_TOOL)};
    for (std::string& argument : all) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const std::string out = logs_.path("out"), err = logs_.path("err");
    // fork and not posix_spawn: the child's peak memory must not start from this process's own.
    const pid_t child = fork();
    if (child != 0) return child;
    dup2(open(out.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600), STDOUT_FILENO);
    dup2(open(err.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600), STDERR_FILENO);
    if (chdir((*this / ".").c_str()) != 0) _exit(126);
    setenv("TMPDIR", ".", 1);
    if (prepare) prepare();
    execv(argv[0], argv.data());
    _exit(127);
  }
  Outcome finish(pid_t child) const {
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return {code, readFile<std::string>(logs_.path("out")), readFile<std::string>(logs_.path("err")), usage.ru_maxrss};
  }

  TemporaryFolder folder_, logs_;
};

}  // namespace qav::test
