#pragma once

#include <CCITTCodeTables.h>

#include <algorithm>
#include <cstdint>
#include <vector>

/// A Group 4 decoder that follows the definition of b1 and b2 pixel by pixel, for comparison.
namespace qav::fuzz::g4 {

class ReferenceDecoder {
 public:
  ReferenceDecoder(const std::vector<std::uint8_t>& data, int width, int height)
      : data_(data), width_(width), height_(height), above_(static_cast<std::size_t>(width), false) {}

  int rows = 0;
  std::vector<bool> pixels;
  /// The rows up to the first with a run of length 0 that does not begin it; such runs leave no trace in the pixels.
  int rowsWithoutEmptyRuns = 0;

  int decode() {
    for (; rows < height_; ++rows) {
      std::vector<bool> row;
      if (const int error = decodeRow(row)) return error;
      pixels.insert(pixels.end(), row.begin(), row.end());
      if (rowsWithoutEmptyRuns == rows && !hasEmptyRun_) ++rowsWithoutEmptyRuns;
      above_ = row;
    }
    std::uint32_t end = 0;
    for (int i = 0; i < 24; ++i) end = end << 1 | static_cast<std::uint32_t>(at_ + i < bits() ? bit(at_ + i) : 1);
    return at_ + 24 <= bits() && end == 0x001001 ? 0 : 14602;
  }

 private:
  int bits() const { return static_cast<int>(data_.size()) * 8; }
  int bit(int i) const { return data_[static_cast<std::size_t>(i) / 8] >> (7 - i % 8) & 1; }

  // The index of the code word that stands here; -1 for none, -2 when the data ends within one.
  template <class Codes>
  int read(const Codes& codes) {
    bool cut = false;
    for (std::size_t c = 0; c < codes.size(); ++c) {
      int matched = 0;
      while (matched < codes[c].length && at_ + matched < bits() &&
             bit(at_ + matched) == (codes[c].value >> (codes[c].length - 1 - matched) & 1))
        ++matched;
      if (matched == codes[c].length) {
        at_ += matched;
        return static_cast<int>(c);
      }
      cut = cut || at_ + matched == bits();
    }
    return cut ? -2 : -1;
  }

  static std::vector<CCITTCode> runCodes(bool black) {
    std::vector<CCITTCode> codes;
    for (int n = 0; n < 64; ++n) codes.push_back(ccittTerminatingCode(black, n));
    for (int n = 64; n <= 2560; n += 64) codes.push_back(ccittMakeUpCode(black, n));
    return codes;
  }

  int readRun(bool black, std::int64_t& run) {
    static const std::vector<CCITTCode> codes[] = {runCodes(false), runCodes(true)};
    for (run = 0;;) {
      const int code = read(codes[black]);
      if (code < 0) return code == -1 ? 14601 : 14901;
      run += code < 64 ? code : (code - 63) * 64;
      if (code < 64) return 0;
    }
  }

  bool colourAbove(int x) const { return x >= 1 && x <= width_ && above_[static_cast<std::size_t>(x) - 1]; }
  int nextChange(int after, bool toBlack) const {
    for (int x = after + 1; x <= width_; ++x)
      if (colourAbove(x) == toBlack && colourAbove(x - 1) != toBlack) return x;
    return width_ + 1;
  }

  int decodeRow(std::vector<bool>& row) {
    static const std::vector<CCITTCode> modes = {{1, 1}, {3, 3}, {2, 3}, {3, 6}, {2, 6},
                                                 {3, 7}, {2, 7}, {1, 3}, {1, 4}};
    static constexpr int offsets[] = {0, 1, -1, 2, -2, 3, -3};
    bool black = false;
    int a0 = 0;
    std::int64_t lastChange = 0;
    hasEmptyRun_ = false;
    const auto change = [&](std::int64_t at) {
      hasEmptyRun_ = hasEmptyRun_ || at == lastChange;
      lastChange = at;
      black = !black;
    };
    const auto paint = [&](std::int64_t to) {
      const auto size = static_cast<std::size_t>(std::min<std::int64_t>(to - 1, width_));
      if (row.size() < size) row.resize(size, black);
    };
    if (at_ >= bits()) return 14901;
    for (;;) {
      const int b1 = nextChange(a0, !black);
      const int b2 = nextChange(b1, black);
      const int code = read(modes);
      if (code < 0) return code == -1 ? 14601 : 14901;
      std::int64_t to = 0;
      if (code == 8) {
        paint(to = b2);
      } else if (code == 7) {
        std::int64_t first = 0, second = 0;
        if (const int error = readRun(black, first)) return error;
        if (const int error = readRun(!black, second)) return error;
        to = std::max(a0, 1) + first;
        paint(to);
        change(to);
        paint(to += second);
        change(to);
      } else {
        to = b1 + offsets[code];
        if (to < std::max(a0, 1)) return 14601;
        paint(to);
        change(to);
      }
      if (to > width_) return 0;
      a0 = static_cast<int>(to);
      if (at_ / 8 + 1 >= static_cast<int>(data_.size()) - 1) return 14901;
    }
  }

  const std::vector<std::uint8_t>& data_;
  int width_, height_;
  int at_ = 0;
  bool hasEmptyRun_ = false;
  std::vector<bool> above_;
};

}  // namespace qav::fuzz::g4
