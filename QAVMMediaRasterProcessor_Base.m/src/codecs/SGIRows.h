#pragma once

#include "codecs/SGIFile.h"

#include <span>
#include <vector>

namespace qav::sgi {

/// What reading takes from a header.
struct Header {
  explicit Header(const std::uint8_t (&head)[12]);
  unsigned magic;
  bool coded;
  std::size_t width, height, channels;
};

/// Expands one coded row: a count byte, of which bit 7 says that the next count bytes are copied, else that the next
/// byte is repeated; a count of 0 ends the row. What the coded bytes do not fill is 0.
void expandRow(std::span<const std::uint8_t> coded, std::span<std::uint8_t> row);

/// Reads rows of the channels of one file.
class RowReader {
 public:
  /// `pixelChannels` is the number of channels that will be read, which the file need not have.
  RowReader(std::FILE* file, const Header& header, std::size_t pixelChannels);

  /// Rows `first` to `first` + `rows` - 1 of a channel; bytes that the file does not have are 0.
  void read(std::size_t channel, std::size_t first, std::size_t rows, std::uint8_t* to);

 private:
  void readTables(std::size_t pixelChannels);
  std::span<const std::uint8_t> codedBytes(std::uint64_t offset, std::size_t count);
  std::size_t readAt(std::uint64_t offset, std::uint8_t* to, std::size_t count);

  std::FILE* file_;
  Header header_;
  std::vector<std::uint8_t> starts_, lengths_;  ///< as they stand in the file
  std::vector<std::uint8_t> block_;             ///< a piece of the file that coded rows are taken from
  std::uint64_t blockOffset_ = 0;
  std::size_t blockFilled_ = 0;
};

}  // namespace qav::sgi
