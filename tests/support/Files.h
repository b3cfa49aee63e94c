#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace qav::test {

/// A folder of its own for a test's files, removed with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    const std::filesystem::path memory = "/dev/shm";  // tests that write thousands of files are quicker there
    std::error_code ignored;
    const bool usable = std::filesystem::is_directory(memory, ignored) && access(memory.c_str(), W_OK) == 0;
    std::string name = ((usable ? memory : std::filesystem::temp_directory_path()) / "qav-test-XXXXXX").string();
    if (mkdtemp(name.data())) folder_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  template <class Content = std::vector<std::uint8_t>>
  std::string write(const std::string& name, const Content& content) const {
    std::ofstream(path(name), std::ios::binary)
        .write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    return path(name);
  }
  std::size_t count() const { return filesIn("").size(); }
  std::vector<std::string> filesIn(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / folder))
      names.push_back(entry.path().filename());
    return names;
  }

 private:
  std::filesystem::path folder_;
};

template <class Content = std::vector<std::uint8_t>>
Content readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace qav::test
