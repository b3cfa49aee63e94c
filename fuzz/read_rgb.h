#pragma once

#include "fuzz/MemoryFile.h"

#include <QAVSGIImageFile.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace qav::fuzz {

/// An SGI file read a sample at a time.
class PlainSGIFile {
 public:
  explicit PlainSGIFile(const std::vector<std::uint8_t>& bytes)
      : bytes_(bytes), width_(number(6, 2)), height_(number(8, 2)), channels_(number(10, 2)) {}

  std::size_t width() const { return width_; }
  std::size_t height() const { return height_; }
  std::size_t channels() const { return channels_; }
  std::size_t pixelChannels() const { return channels() == 1 || channels() == 4 ? channels() : 3; }
  bool isCoded() const { return at(2) == 1; }
  bool isReadable() const {
    return width() * height() * pixelChannels() <= INT32_MAX &&
           (!isCoded() || bytes_.size() >= kHeader + 8 * height() * channels());
  }
  std::vector<std::uint8_t> pixels() const {
    std::vector<std::uint8_t> pixels(width() * height() * pixelChannels());
    for (std::size_t y = 0; y < height(); ++y) {
      for (std::size_t c = 0; c < pixelChannels(); ++c) {
        const std::vector<std::uint8_t> samples = row(c, y);
        for (std::size_t x = 0; x < samples.size(); ++x) pixels[(y * width() + x) * pixelChannels() + c] = samples[x];
      }
    }
    return pixels;
  }

 private:
  static constexpr std::size_t kHeader = 512;

  std::uint8_t at(std::size_t offset) const { return offset < bytes_.size() ? bytes_[offset] : std::uint8_t{0}; }
  std::size_t number(std::size_t offset, std::size_t bytes) const {
    std::size_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i) value = value << 8 | at(offset + i);
    return value;
  }
  std::vector<std::uint8_t> row(std::size_t channel, std::size_t y) const {
    const std::size_t index = channel * height() + y;
    std::vector<std::uint8_t> samples;
    if (!isCoded()) {
      while (samples.size() < width()) samples.push_back(at(kHeader + index * width() + samples.size()));
      return samples;
    }
    if (channel >= channels()) return samples;
    std::size_t from = number(kHeader + 4 * index, 4);
    const std::size_t end = std::min(bytes_.size(), from + number(kHeader + 4 * (height() * channels() + index), 4));
    while (from + 1 < end && samples.size() < width()) {
      const std::uint8_t head = at(from++);
      if (head % 128 == 0) break;
      for (int k = head % 128; k > 0 && from < end && samples.size() < width(); --k) {
        samples.push_back(at(from));
        if (head >= 128) ++from;
      }
      if (head < 128) ++from;
    }
    return samples;
  }

  const std::vector<std::uint8_t>& bytes_;
  std::size_t width_, height_, channels_;
};

/// Reads a file: the plain reader tells what must come out. Large pictures are left out, as they take long.
inline void readSGIFile(const std::vector<std::uint8_t>& bytes) {
  const PlainSGIFile plain(bytes);
  if (plain.width() * plain.height() > 1 << 20) return;
  const MemoryFile file(bytes);
  QAVPixelImage* const image = ReadRGB(QAVString(file.path()));
  expect((image != nullptr) == plain.isReadable());
  if (!image) return;
  const std::vector<std::uint8_t> expected = plain.pixels();
  expect(image->GetBytesPerPixel() == static_cast<int>(plain.pixelChannels()));
  expect(expected.empty() || std::memcmp(image->GetPixelsToRead(), expected.data(), expected.size()) == 0);
  image->Release();
}

/// The input is a file without its magic number: with another one the file would stay open.
inline void read_rgb(std::span<const std::uint8_t> input) {
  std::vector<std::uint8_t> bytes{0x01, 0xDA};
  bytes.insert(bytes.end(), input.begin(), input.end());
  readSGIFile(bytes);
}

}  // namespace qav::fuzz
