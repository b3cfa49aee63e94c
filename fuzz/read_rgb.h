#pragma once

#include "fuzz/Expect.h"

#include <QAVSGIImageFile.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace qav::fuzz {

/// Reads a file of memory whose first bytes, in front of `input`, are the magic number: without it the file would stay
/// open. Pictures above 16 million samples are left out, as their zeros take long.
inline void read_rgb(std::span<const std::uint8_t> input) {
  const auto word = [&](std::size_t at) -> std::size_t {
    return at + 1 < input.size() ? std::size_t{input[at]} << 8 | input[at + 1] : 0;
  };
  if (word(4) * word(6) > std::size_t{4} << 20) return;
  const int descriptor = ::memfd_create("read_rgb", 0);
  expect(descriptor >= 0);
  std::vector<std::uint8_t> bytes(2 + input.size());
  bytes[0] = 0x01;
  bytes[1] = 0xDA;
  std::copy(input.begin(), input.end(), bytes.begin() + 2);
  expect(::write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  QAVPixelImage* const image = ReadRGB(QAVString("/proc/self/fd/" + std::to_string(descriptor)));
  ::close(descriptor);
  if (!image) return;
  // Every byte of the picture must have a value.
  const std::size_t size = word(4) * word(6) * static_cast<std::size_t>(image->GetBytesPerPixel());
  unsigned sum = 0;
  for (std::size_t i = 0; i < size; ++i) sum += image->GetPixelsToRead()[i];
  expect(sum <= 255 * size);
  image->Release();
}

}  // namespace qav::fuzz
