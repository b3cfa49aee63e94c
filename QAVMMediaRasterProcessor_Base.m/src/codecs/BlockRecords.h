#pragma once

#include "codecs/BlockDataType.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

/// Reading the records of a block-record file, one after another.
namespace qav::block {

using Bytes = std::vector<unsigned char>;

/// Big-endian 32-bit number at `offset`; bytes that are not there count as zeros.
std::int32_t numberAt(const Bytes& bytes, std::size_t offset);

class RecordReader {
 public:
  /// Opens a regular file and passes its prologue; isOpen tells whether that worked.
  explicit RecordReader(const char* path);
  bool isOpen() const { return file_ != nullptr; }

  /// Reads the next record: its first L bytes, as far as the file has them, and no more than `most`. A negative length
  /// passes over as many bytes and leaves `bytes` empty. False for a length of 0.
  bool read(Bytes& bytes, std::uint64_t most);
  /// Passes over the next `count` records. False for a length of 0 among them.
  bool skip(std::int64_t count);

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  bool readLength(std::int64_t& length);

  std::unique_ptr<std::FILE, Close> file_;
  std::uint64_t size_ = 0;
  std::uint64_t position_ = 0;  // may lie behind the end
};

/// What an image record says.
struct ImageRecord {
  std::int32_t extent[2] = {};
  std::int32_t typeCode = 0;
  std::int32_t bands = 0;
  std::int32_t tableSize = 0;  ///< for three-channel data: non-zero when two more records precede the bands

  ImageRecord() = default;
  explicit ImageRecord(const Bytes& bytes);
  /// Data records behind the image record.
  std::int64_t dataRecords(const DataType& type) const;
};

/// Reads the records before the entries and stores the number of entries. False for a record error.
bool readEntryCount(RecordReader& reader, std::int32_t& entries);

enum class NextImage { Found, None, RecordError };

/// Goes on to the next image entry among the `entries` that are left, which it counts down, and reads its image record.
NextImage nextImage(RecordReader& reader, std::int32_t& entries, ImageRecord& image);

/// Bytes of the records whose fields are read here; the rest of such a record is of no use.
inline constexpr std::uint64_t kHeaderBytes = 80;

}  // namespace qav::block
