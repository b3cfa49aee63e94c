#include "support/Comparison.h"
#include "support/MemoryPath.h"

#include <cstdio>
#include <memory>

namespace qav::bench {
namespace {

constexpr std::size_t kSize = 512 + std::size_t{3} * kWidth * kHeight;

void write(const MemoryPath& path) {
  static const std::vector<std::uint8_t> bytes(kSize, 77);
  std::FILE* file = std::fopen(path.name(), "wb");
  std::fwrite(bytes.data(), 1, kSize, file);
  std::fclose(file);
}

[[maybe_unused]] const bool added[] = {
    add("SGI read against one fread", "fread",
        [] {
          static const MemoryPath path("plain.rgb");
          static const bool written = (write(path), true);
          static_cast<void>(written);
          const std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[kSize]);
          std::FILE* file = std::fopen(path.name(), "rb");
          const std::size_t read = std::fread(bytes.get(), 1, kSize, file);
          std::fclose(file);
          keep(&read);
          keep(bytes.get());
        }),
    add("SGI write against one fwrite", "fwrite",
        [] {
          static const MemoryPath path("plain-written.rgb");
          write(path);
        }),
};

}  // namespace
}  // namespace qav::bench
