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
  std::string write(const std::string& name, const std::vector<std::uint8_t>& bytes) const {
    std::ofstream(path(name), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path(name);
  }

 private:
  std::filesystem::path folder_;
};

inline std::vector<std::uint8_t> readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace qav::test
