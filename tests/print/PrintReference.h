#pragma once

#include "support/Images.h"

#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

/// Print encoding done one sample, one run and one digit at a time.
namespace qav::test {

inline constexpr char kFlush = '\1';

/// A stream that keeps what it is given, with kFlush wherever it was flushed.
class RecordingStream : public std::ostream {
 public:
  RecordingStream() : std::ostream(&buffer_) {}
  const std::string& text() const { return buffer_.text; }

 private:
  struct Buffer : std::streambuf {
    int_type overflow(int_type c) override {
      text.push_back(static_cast<char>(c));
      return c;
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
      text.append(s, static_cast<std::size_t>(n));
      return n;
    }
    int sync() override {
      text.push_back(kFlush);
      return 0;
    }
    std::string text;
  };
  Buffer buffer_;
};

inline std::string base85Text(const std::uint8_t* data, std::size_t count) {
  std::string text;
  for (std::size_t p = 0; p < count; p += 4) {
    const std::size_t there = std::min<std::size_t>(4, count - p);
    std::uint32_t value = 0;
    for (std::size_t k = 0; k < 4; ++k) value = value << 8 | (k < there ? data[p + k] : 0u);
    std::string digits;
    for (std::uint32_t weight = 85u * 85 * 85 * 85; weight > 0; weight /= 85)
      digits += static_cast<char>('!' + value / weight % 85);
    text += there < 4 ? digits.substr(0, there + 1) : value == 0 ? "z" : digits;
    if (there == 4 && p != 0 && p % 80 == 0) text += {'\n', kFlush};
  }
  return text;
}

/// The samples of a byte image in print order.
inline Bytes printSamples(const QAVPixelImage& image, bool bottomUp, int mode) {
  const auto [width, height] = extentOf(image);
  const int channels = image.GetFormat() + 1;
  const bool drops = mode == 1 && channels % 2 == 0;
  Bytes samples;
  for (int row = 0; row < height; ++row) {
    for (int x = 0; x < width; ++x) {
      const int pixel = (bottomUp ? height - 1 - row : row) * width + x;
      const std::uint8_t* const at = image.GetPixelsToRead() + pixel * channels;
      for (int k = 0; k < (drops ? channels - 1 : channels); ++k)
        samples.push_back(drops && at[channels - 1] <= 126 ? 255 : at[k]);
    }
  }
  return samples;
}

/// The run-length encoder as the state machine that it is, fed with one maximal run after another.
class RunLengthMachine {
 public:
  explicit RunLengthMachine(std::size_t samples) : samples_(samples) {}

  void run(std::uint8_t c, std::size_t r) {
    for (;;) {
      const bool open = state_ == InLiteral || (state_ == AfterPair && mergeable_);
      if (buffer_.size() >= 896 && !open) flush();
      if (state_ == InLiteral && r == 1) {
        buffer_.push_back(c);
        if (++buffer_[literal_] == 127) state_ = Start;
        return;
      }
      if (state_ == AfterPair) {
        if (r == 1 && mergeable_ && buffer_[literal_] < 126) {
          buffer_[buffer_.size() - 2] = buffer_.back();
          buffer_[literal_] = static_cast<std::uint8_t>(buffer_[literal_] + 2);
          state_ = buffer_[literal_] == 127 ? Start : InLiteral;
        } else {
          state_ = AfterRepeat;
        }
        continue;
      }
      if (r == 1) {
        literal_ = buffer_.size();
        put(0, c);
        state_ = InLiteral;
        return;
      }
      const bool afterLiteral = state_ == InLiteral;
      mergeable_ = afterLiteral && r == 2;
      state_ = afterLiteral ? AfterPair : AfterRepeat;
      if (r <= 128) return put(static_cast<std::uint8_t>(257 - r), c);
      put(129, c);
      r -= 128;
    }
  }

  std::string finish() {
    buffer_.push_back(128);
    return text_ + base85Text(buffer_.data(), buffer_.size());
  }
  bool isCompressible(std::size_t imageBytes) const {
    return !hopeless_ && flushed_ + buffer_.size() + 1 <= imageBytes;
  }

 private:
  enum State { Start, AfterRepeat, InLiteral, AfterPair };

  void put(std::uint8_t a, std::uint8_t b) {
    buffer_.push_back(a);
    buffer_.push_back(b);
  }
  void flush() {
    const std::size_t whole = buffer_.size() / 4 * 4;
    text_ += base85Text(buffer_.data(), whole);
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(whole));
    flushed_ += whole;
    hopeless_ = hopeless_ || flushed_ + 2 >= samples_;
  }

  State state_ = Start;
  bool mergeable_ = false, hopeless_ = false;
  std::size_t literal_ = 0, flushed_ = 0, samples_;
  Bytes buffer_;
  std::string text_;
};

inline RunLengthMachine runLengthMachine(const QAVPixelImage& image, bool bottomUp, int mode) {
  Bytes samples = printSamples(image, bottomUp, mode);
  if (mode != 1 && image.GetFormat() % 2 == 1)
    samples.resize(samples.size() - samples.size() / static_cast<std::size_t>(image.GetFormat() + 1));
  RunLengthMachine machine(samples.size());
  for (std::size_t i = 0, r; i < samples.size(); i += r) {
    for (r = 1; i + r < samples.size() && samples[i + r] == samples[i];) ++r;
    machine.run(samples[i], r);
  }
  return machine;
}

}  // namespace qav::test
