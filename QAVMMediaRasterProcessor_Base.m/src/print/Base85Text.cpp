#include "print/Base85Text.h"

#include "kernels/Base85.h"

#include <algorithm>
#include <cstring>

namespace qav::base85 {

using kernels::base85Kernels;
using kernels::kBase85LineBytes;
using kernels::kBase85LineGroups;
using kernels::kBase85LineLength;

char* writeGroups(const std::uint8_t* data, std::size_t groups, char* text) {
  while (groups > 0) {
    std::size_t done = base85Kernels().encodeGroups(data, groups, text);
    text += 5 * done;
    constexpr std::uint8_t zero[4] = {};
    for (; done < groups && std::memcmp(data + 4 * done, zero, 4) == 0; ++done) *text++ = 'z';
    data += 4 * done;
    groups -= done;
  }
  return text;
}

char* writeLines(const std::uint8_t* data, std::size_t lines, char newLine, char* text, std::size_t* lengths) {
  while (lines > 0) {
    std::size_t done = base85Kernels().encodeLines(data, lines, newLine, text);
    lengths = std::fill_n(lengths, done, kBase85LineLength);
    text += kBase85LineLength * done;
    if (done < lines) {
      char* const line = text;
      text = writeGroups(data + kBase85LineBytes * done, kBase85LineGroups, text);
      *text++ = newLine;
      *lengths++ = static_cast<std::size_t>(text - line);
      ++done;
    }
    data += kBase85LineBytes * done;
    lines -= done;
  }
  return text;
}

char* writeRest(const std::uint8_t* data, std::size_t count, char* text) {
  if (count == 0) return text;
  std::uint8_t group[4] = {};
  std::memcpy(group, data, count);
  // No short form here: a group of zeros is five zero digits.
  char digits[5] = {'!', '!', '!', '!', '!'};
  base85Kernels().encodeGroups(group, 1, digits);
  return std::copy_n(digits, count + 1, text);
}

}  // namespace qav::base85
