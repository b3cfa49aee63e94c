#pragma once

#include <cstddef>
#include <cstdint>

/// The text of base-85 groups, with its short form for zero groups and its line breaks.
namespace qav::base85 {

/// Writes the text of `groups` whole groups, at most 5 characters each, and returns its end.
char* writeGroups(const std::uint8_t* data, std::size_t groups, char* text);

/// As writeGroups for `lines` lines of kernels::kBase85LineGroups groups, each followed by `newLine`. `lengths`
/// receives the length of every line.
char* writeLines(const std::uint8_t* data, std::size_t lines, char newLine, char* text, std::size_t* lengths);

/// Writes the 2 to 4 digits of a last group of 1 to 3 bytes and returns their end; nothing for 0.
char* writeRest(const std::uint8_t* data, std::size_t count, char* text);

}  // namespace qav::base85
