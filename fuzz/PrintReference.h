#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// Print data decoded one byte and one digit at a time.
namespace qav::fuzz {

inline std::vector<std::uint8_t> plainRunLengthDecode(std::span<const std::uint8_t> source) {
  std::vector<std::uint8_t> out;
  for (std::size_t i = 0; i < source.size() && source[i] != 128;) {
    const std::size_t length = source[i++];
    for (std::size_t k = 0; length < 128 && k <= length && i < source.size(); ++k) out.push_back(source[i++]);
    if (length > 128 && i < source.size()) out.insert(out.end(), 257 - length, source[i++]);
  }
  return out;
}

/// Nothing for malformed text.
inline std::optional<std::vector<std::uint8_t>> plainBase85Decode(std::span<const std::uint8_t> text) {
  constexpr std::string_view whiteSpace("\0\b\t\n\f\r \x7f", 8);
  std::vector<std::uint8_t> out;
  std::uint32_t value = 0;
  std::size_t digits = 0;
  const auto finish = [&](std::size_t bytes) {
    for (std::size_t k = 0; k < bytes; ++k) out.push_back(static_cast<std::uint8_t>(value >> (24 - 8 * k)));
    value = 0;
    digits = 0;
  };
  // A short group is raised by one unit of its last digit and filled up with zeros.
  const auto finishShort = [&] {
    if (digits == 1) return false;
    const std::size_t bytes = digits == 0 ? 0 : digits - 1;
    for (std::size_t k = digits++; k < 5; ++k) value = (k + 1 == digits ? value + 1 : value) * 85;
    finish(bytes);
    return true;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = static_cast<char>(text[i]);
    if (whiteSpace.find(c) != whiteSpace.npos) continue;
    if (c == 'z' && digits == 0) {
      finish(4);
    } else if (c == '~' && i + 1 < text.size() && text[i + 1] == '>') {
      if (!finishShort()) return std::nullopt;
      ++i;
    } else if (c >= '!' && c <= 'u') {
      value = value * 85 + static_cast<std::uint32_t>(c - '!');
      if (++digits == 5) finish(4);
    } else {
      return std::nullopt;
    }
  }
  if (!finishShort()) return std::nullopt;
  return out;
}

}  // namespace qav::fuzz
