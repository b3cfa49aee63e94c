#include "codecs/SGIRows.h"

#include <algorithm>
#include <cstring>

namespace qav::sgi {

Header::Header(const std::uint8_t (&head)[12])
    : magic(bigEndian16(head)),
      coded(head[2] == kRunLengthCoded),
      width(bigEndian16(head + 6)),
      height(bigEndian16(head + 8)),
      channels(bigEndian16(head + 10)) {}

void expandRow(std::span<const std::uint8_t> coded, std::span<std::uint8_t> row) {
  while (!coded.empty() && !row.empty()) {
    const bool literal = (coded[0] & 0x80) != 0;
    std::size_t count = coded[0] & 0x7Fu;
    coded = coded.subspan(1);
    if (count == 0 || coded.empty()) break;
    count = std::min(count, row.size());
    if (literal) {
      count = std::min(count, coded.size());
      std::memcpy(row.data(), coded.data(), count);
      coded = coded.subspan(count);
    } else {
      std::memset(row.data(), coded[0], count);
      coded = coded.subspan(1);
    }
    row = row.subspan(count);
  }
  std::fill(row.begin(), row.end(), std::uint8_t{0});
}

RowReader::RowReader(std::FILE* file, const Header& header, std::size_t pixelChannels) : file_(file), header_(header) {
  if (!header_.coded) return;
  readTables(pixelChannels);
  block_.resize(std::max(kStripSize, 2 * header_.width));
}

// Only the entries of the channels that are read: a file may declare 65535.
void RowReader::readTables(std::size_t pixelChannels) {
  const std::size_t tableSize = 4 * header_.height * header_.channels;
  const std::size_t needed = 4 * header_.height * std::min(header_.channels, pixelChannels);
  starts_.resize(needed);
  lengths_.resize(needed);
  readAt(kHeaderSize, starts_.data(), needed);
  readAt(kHeaderSize + tableSize, lengths_.data(), needed);
}

std::size_t RowReader::readAt(std::uint64_t offset, std::uint8_t* to, std::size_t count) {
  if (count == 0 || ::fseeko(file_, static_cast<off_t>(offset), SEEK_SET) != 0) return 0;
  return std::fread(to, 1, count, file_);
}

std::span<const std::uint8_t> RowReader::codedBytes(std::uint64_t offset, std::size_t count) {
  if (offset < blockOffset_ || offset + count > blockOffset_ + blockFilled_) {
    blockFilled_ = readAt(offset, block_.data(), block_.size());
    blockOffset_ = offset;
  }
  const auto skipped = static_cast<std::size_t>(offset - blockOffset_);
  return {block_.data() + skipped, std::min(count, blockFilled_ - skipped)};
}

void RowReader::read(std::size_t channel, std::size_t first, std::size_t rows, std::uint8_t* to) {
  const std::size_t width = header_.width;
  if (!header_.coded) {
    const std::size_t row = channel * header_.height + first;
    const std::size_t there = readAt(kHeaderSize + row * width, to, rows * width);
    std::memset(to + there, 0, rows * width - there);
    return;
  }
  for (std::size_t y = first; y < first + rows; ++y, to += width) {
    const std::size_t entry = 4 * (channel * header_.height + y);
    const bool known = entry < starts_.size();
    // Every packet gives at least one pixel for two bytes, so no more than that is of use.
    const std::size_t length = known ? std::min<std::size_t>(bigEndian32(&lengths_[entry]), 2 * width) : 0;
    expandRow(length ? codedBytes(bigEndian32(&starts_[entry]), length) : std::span<const std::uint8_t>(), {to, width});
  }
}

}  // namespace qav::sgi
