#include <QAVPrintEncoding.h>

#include "kernels/Base85.h"
#include "print/Base85Text.h"

#include <algorithm>

namespace {

using qav::kernels::kBase85LineBytes;
using qav::kernels::kBase85LineGroups;
using qav::kernels::kBase85LineLength;

constexpr std::size_t kLinesTogether = 40;

/// The text of one call: formatted many lines at a time, handed to the stream line by line.
class LineWriter {
 public:
  explicit LineWriter(std::ostream& os) : os_(os) {}

  void addGroups(const std::uint8_t* data, std::size_t groups) { end_ = qav::base85::writeGroups(data, groups, end_); }
  void addRest(const std::uint8_t* data, std::size_t count) { end_ = qav::base85::writeRest(data, count, end_); }

  /// Whole lines; the first one goes on where addGroups has ended.
  void writeLines(const std::uint8_t* data, std::size_t lines) {
    const char newLine = os_.widen('\n');
    std::size_t lengths[kLinesTogether];
    for (std::size_t together; lines > 0; lines -= together, data += kBase85LineBytes * together) {
      together = std::min(lines, kLinesTogether);
      const auto begun = static_cast<std::size_t>(end_ - text_);
      qav::base85::writeLines(data, together, newLine, end_, lengths);
      lengths[0] += begun;
      const char* line = text_;
      for (std::size_t i = 0; i < together; line += lengths[i++])
        os_.write(line, static_cast<std::streamsize>(lengths[i])).flush();
      end_ = text_;
    }
  }

  void finish() {
    if (end_ > text_) os_.write(text_, end_ - text_);
  }

 private:
  std::ostream& os_;
  // The group in front of the first line, the lines, or an unfinished line.
  char text_[5 + (kLinesTogether + 1) * kBase85LineLength];
  char* end_ = text_;
};

}  // namespace

void DumpASCII85(ostream_withassign& os, const std::uint8_t* data, unsigned long count) {
  LineWriter writer(os);
  std::size_t groups = count / 4;
  const std::uint8_t* const rest = data + 4 * groups;
  if (groups > 0) {
    writer.addGroups(data, 1);
    data += 4;
    --groups;
  }
  const std::size_t lines = groups / kBase85LineGroups;
  writer.writeLines(data, lines);
  writer.addGroups(data + kBase85LineBytes * lines, groups % kBase85LineGroups);
  writer.addRest(rest, count % 4);
  writer.finish();
}
