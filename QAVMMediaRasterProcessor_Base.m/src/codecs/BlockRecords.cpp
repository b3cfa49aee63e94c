#include "codecs/BlockRecords.h"

#include <sys/stat.h>

#include <algorithm>

namespace qav::block {
namespace {

constexpr std::uint64_t kBlock = 80;
constexpr std::uint64_t kPrologue = 3 * kBlock;

std::uint64_t wholeBlocks(std::uint64_t bytes) { return (bytes + kBlock - 1) / kBlock * kBlock; }

}  // namespace

std::int32_t numberAt(const Bytes& bytes, std::size_t offset) {
  std::uint32_t number = 0;
  for (std::size_t i = offset; i < offset + 4; ++i) number = number << 8 | (i < bytes.size() ? bytes[i] : 0u);
  return static_cast<std::int32_t>(number);
}

RecordReader::RecordReader(const char* path) {
  // A pipe or a device could block, and has no end to measure lengths against.
  struct stat status {};
  if (!path || stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return;
  file_.reset(std::fopen(path, "rb"));
  size_ = static_cast<std::uint64_t>(status.st_size);
  position_ = kPrologue;
}

// A block that the file cuts short reads as zeros.
bool RecordReader::readLength(std::int64_t& length) {
  length = 0;
  if (position_ + kBlock <= size_ && std::fseek(file_.get(), static_cast<long>(position_), SEEK_SET) == 0) {
    Bytes block(4);
    block.resize(std::fread(block.data(), 1, block.size(), file_.get()));
    length = numberAt(block, 0);
  }
  position_ += kBlock;
  return length != 0;
}

bool RecordReader::read(Bytes& bytes, std::uint64_t most) {
  bytes.clear();
  std::int64_t length = 0;
  if (!readLength(length)) return false;
  if (length > 0 && position_ < size_) {
    const std::uint64_t held = std::min({static_cast<std::uint64_t>(length), most, size_ - position_});
    bytes.resize(held);
    const bool there = std::fseek(file_.get(), static_cast<long>(position_), SEEK_SET) == 0;
    bytes.resize(there ? std::fread(bytes.data(), 1, held, file_.get()) : 0);
  }
  position_ += wholeBlocks(static_cast<std::uint64_t>(length < 0 ? -length : length));
  return true;
}

bool RecordReader::skip(std::int64_t count) {
  for (Bytes none; count > 0; --count)
    if (!read(none, 0)) return false;
  return true;
}

ImageRecord::ImageRecord(const Bytes& bytes)
    : extent{numberAt(bytes, 0), numberAt(bytes, 4)},
      typeCode(numberAt(bytes, 12)),
      bands(numberAt(bytes, 16)),
      tableSize(numberAt(bytes, 32)) {}

std::int64_t ImageRecord::dataRecords(const DataType& type) const {
  const std::int64_t count = bands;
  if (type.channels() == 1) return count + 1;
  return type.channels() == 3 ? 3 * count + (tableSize != 0 ? 2 : 0) : 0;
}

bool readEntryCount(RecordReader& reader, std::int32_t& entries) {
  Bytes record;
  if (!reader.skip(2) || !reader.read(record, kHeaderBytes) || !reader.skip(1)) return false;
  entries = numberAt(record, 0);
  return true;
}

NextImage nextImage(RecordReader& reader, std::int32_t& entries, ImageRecord& image) {
  constexpr std::int32_t imageType = 1;
  for (Bytes record; entries > 0;) {
    --entries;
    if (!reader.read(record, kHeaderBytes)) return NextImage::RecordError;
    const bool found = numberAt(record, 0) == imageType;
    if (!found && !reader.skip(numberAt(record, 4))) return NextImage::RecordError;
    if (!found) continue;
    if (!reader.read(record, kHeaderBytes)) return NextImage::RecordError;
    image = ImageRecord(record);
    return NextImage::Found;
  }
  return NextImage::None;
}

}  // namespace qav::block
