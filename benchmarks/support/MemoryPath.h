#pragma once

#include <unistd.h>

#include <cstdio>
#include <string>

namespace qav::bench {

/// A file in memory that goes with the program.
class MemoryPath {
 public:
  explicit MemoryPath(const std::string& name)
      : path_("/dev/shm/qav-bench-" + std::to_string(::getpid()) + "-" + name) {}
  ~MemoryPath() { std::remove(path_.c_str()); }
  MemoryPath(const MemoryPath&) = delete;
  MemoryPath& operator=(const MemoryPath&) = delete;
  const char* name() const { return path_.c_str(); }

 private:
  std::string path_;
};

}  // namespace qav::bench
