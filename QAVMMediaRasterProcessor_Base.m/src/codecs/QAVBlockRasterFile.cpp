#include <QAVBlockRasterFile.h>

#include "codecs/BlockBands.h"
#include "codecs/BlockRecords.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace qav::block {
namespace {

constexpr int kKind = 1;
constexpr int kRecordError = -1;
constexpr int kUnknownType = -2;
constexpr int kNoSuchRecords = -4;
constexpr int kNotOpen = -5;
constexpr int kBadOrigin = -10;
constexpr int kBadRectangle = -11;

int readHeader(RecordReader& reader, std::int64_t* extent) {
  std::int32_t entries = 0;
  if (!readEntryCount(reader, entries)) return kRecordError;
  for (ImageRecord image;;) {
    const NextImage next = nextImage(reader, entries, image);
    if (next != NextImage::Found) return next == NextImage::None ? 0 : kRecordError;
    if (extent) std::copy_n(image.extent, 2, extent);
    DataType type;
    if (decodeDataType(image.typeCode, type) != 0) return kUnknownType;
    if (!reader.skip(image.dataRecords(type))) return kRecordError;
  }
}

// The part of a picture that is asked for, column first.
struct Rectangle {
  const std::int64_t* origin;
  const std::int64_t* size;

  bool empty() const { return size[0] <= 0 || size[1] <= 0; }
  // Negative for a rectangle that does not lie within the extents, which count as last indices.
  int check(const ImageRecord& image) const {
    for (int i = 0; i < 2; ++i)
      if (!origin || origin[i] < 0 || origin[i] > image.extent[i]) return kBadOrigin;
    for (int i = 0; i < 2; ++i)
      if (!size || image.extent[i] - origin[i] + 1 < size[i]) return kBadRectangle;
    return 0;
  }
  // Bytes of the result; 0 when the rectangle is empty or no buffer can be as large.
  std::size_t bytes() const {
    if (!size || empty()) return 0;
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / 3;
    return size[0] > most / size[1] ? 0 : static_cast<std::size_t>(size[0] * size[1] * 3);
  }
};

class PictureReader {
 public:
  PictureReader(RecordReader& reader, const ImageRecord& image, const DataType& type, const Rectangle& rectangle,
                unsigned char* out)
      : reader_(reader), image_(image), type_(type), rectangle_(rectangle), out_(out) {
    constexpr std::int64_t bandSamples = 262144;
    const std::int64_t rows = std::min<std::int64_t>(bandSamples / std::max(1, image.extent[0]), image.extent[1]);
    bandRows_ = std::max<std::int64_t>(1, rows);
  }

  int read() {
    if (!readTable()) return kRecordError;
    const std::int64_t past = rectangle_.origin[1] + rectangle_.size[1];
    const std::int64_t first = rectangle_.origin[1] / bandRows_, last = (past - 1) / bandRows_;
    if (last >= image_.bands) return kNoSuchRecords;
    if (!reader_.skip(first * type_.channels())) return kRecordError;
    for (std::int64_t band = first; band <= last; ++band) {
      for (int channel = 0; channel < type_.channels(); ++channel)
        if (!readBand(band, channel)) return kRecordError;
    }
    return 0;
  }

 private:
  // One-channel data begins with the table; the records before three-channel bands have no use here.
  bool readTable() {
    constexpr std::uint64_t usefulBytes = 1024;  // 256 entries
    if (type_.channels() == 1) return reader_.read(table_, usefulBytes);
    return image_.tableSize == 0 || reader_.skip(2);
  }

  bool readBand(std::int64_t band, int channel) {
    Bytes record;
    if (!reader_.read(record, std::numeric_limits<std::uint64_t>::max())) return false;
    const std::int64_t top = band * bandRows_;
    const std::int64_t firstRow = std::max(rectangle_.origin[1], top);
    const std::int64_t pastRow = std::min(rectangle_.origin[1] + rectangle_.size[1], top + bandRows_);
    const BandRectangle part{rectangle_.origin[0] + 1, rectangle_.origin[0] + rectangle_.size[0], firstRow - top + 1,
                             pastRow - top};
    const int sampleBytes = type_.bytesPerSample();
    samples_.assign(static_cast<std::size_t>((pastRow - firstRow) * part.width() * sampleBytes), 0);
    if (decodeBand(type_.compression, image_.extent[0], part, sampleBytes, record, samples_) != 0) return false;
    store(out_ + (firstRow - rectangle_.origin[1]) * part.width() * 3, channel);
    return true;
  }

  void store(unsigned char* to, int channel) const {
    const auto step = static_cast<std::size_t>(type_.bytesPerSample());
    for (std::size_t i = 0; i < samples_.size(); i += step, to += 3) {
      if (type_.channels() == 3)
        to[channel] = samples_[i];
      else if (step == 1 && image_.tableSize > 0)
        lookUp(samples_[i], to);
      else
        std::memset(to, samples_[i], 3);
    }
  }

  void lookUp(unsigned index, unsigned char* colour) const {
    for (std::size_t k = 0; k < 3; ++k) {
      const std::size_t at = std::size_t{index} * 4 + k;
      colour[k] = static_cast<std::int64_t>(index) < image_.tableSize && at < table_.size() ? table_[at] : 0;
    }
  }

  RecordReader& reader_;
  const ImageRecord& image_;
  const DataType& type_;
  const Rectangle& rectangle_;
  unsigned char* out_;
  std::int64_t bandRows_ = 1;
  Bytes table_;
  Bytes samples_;
};

int readPicture(RecordReader& reader, const Rectangle& rectangle, unsigned char* out) {
  std::int32_t entries = 0;
  if (!readEntryCount(reader, entries)) return kRecordError;
  ImageRecord image;
  const NextImage next = nextImage(reader, entries, image);
  if (next != NextImage::Found) return next == NextImage::None ? kNoSuchRecords : kRecordError;
  DataType type;
  if (decodeDataType(image.typeCode, type) != 0) return kUnknownType;
  if (const int error = rectangle.check(image)) return error;
  if (rectangle.empty()) return 0;
  return out ? PictureReader(reader, image, type, rectangle, out).read() : kBadRectangle;
}

}  // namespace
}  // namespace qav::block

int ripicrhd(const char* path, int* kind, std::int64_t extent[2]) {
  using namespace qav::block;
  if (extent) extent[0] = extent[1] = 0;
  try {
    RecordReader reader(path);
    if (!reader.isOpen()) return kNotOpen;
    if (kind) *kind = kKind;
    return readHeader(reader, extent);
  } catch (const std::bad_alloc&) {
    return kRecordError;
  }
}

int ripicrdt(const char* path, int* kind, const std::int64_t origin[2], const std::int64_t size[2],
             unsigned char* out) {
  using namespace qav::block;
  const Rectangle rectangle{origin, size};
  if (out) std::memset(out, 0, rectangle.bytes());
  try {
    RecordReader reader(path);
    if (!reader.isOpen() || !kind || *kind != kKind) return kNotOpen;
    return readPicture(reader, rectangle, out);
  } catch (const std::bad_alloc&) {
    return kRecordError;
  }
}
