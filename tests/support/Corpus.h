#pragma once

#include "support/Files.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace qav::test {

/// Runs a fuzz target over every file in fuzz/corpus/`name`, over every prefix of it, and with every single bit turned
/// over; of large files only some thousand of these. Inputs stand in arrays of their exact size.
inline void replayCorpus(const std::string& name, void (*target)(std::span<const std::uint8_t>)) {
  const auto run = [&](std::span<const std::uint8_t> input) {
    const auto exact = std::make_unique<std::uint8_t[]>(input.size());
    std::copy(input.begin(), input.end(), exact.get());
    target({exact.get(), input.size()});
  };
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(QAV_SOURCE_DIR "/fuzz/corpus/") + name)) {
    SCOPED_TRACE(entry.path().string());
    auto bytes = readFile(entry.path().string());
    const std::size_t step = bytes.size() / 2000 + 1;
    run(bytes);
    for (std::size_t size = 0; size < bytes.size(); size += step) run(std::span(bytes).first(size));
    for (std::size_t bit = 0; bit < 8 * bytes.size(); bit += 4 * step - 3) {
      const auto flipped = static_cast<std::uint8_t>(1u << bit % 8);
      bytes[bit / 8] ^= flipped;
      run(bytes);
      bytes[bit / 8] ^= flipped;
    }
    ++files;
  }
  EXPECT_GT(files, 0u);
}

}  // namespace qav::test
