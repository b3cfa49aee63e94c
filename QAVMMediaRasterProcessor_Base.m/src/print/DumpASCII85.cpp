#include <QAVPrintEncoding.h>

#include "kernels/Base85.h"
#include "print/Base85Text.h"

#include <algorithm>

#include <cxxabi.h>

namespace {

using qav::kernels::kBase85LineBytes;
using qav::kernels::kBase85LineGroups;
using qav::kernels::kBase85LineLength;

constexpr std::size_t kLinesTogether = 40;

constexpr auto kBad = std::ios_base::badbit;

// Without the exception that the stream may want for its state.
void setBad(std::ostream& os) {
  try {
    os.setstate(kBad);
  } catch (const std::ios_base::failure&) {
  }
}

// Does something with the stream's buffer; failures and exceptions act on the stream as in its own functions.
template <class Call>
void withBuffer(std::ostream& os, Call call) {
  bool done = false;
  try {
    done = call(*os.rdbuf());
  } catch (const abi::__forced_unwind&) {
    setBad(os);
    throw;
  } catch (...) {
    setBad(os);
    if (os.exceptions() & kBad) throw;
    return;
  }
  if (!done) os.setstate(kBad);
}

// Writes every line and flushes the stream behind it. Most of the time that a stream takes for a short line goes into
// questions that have the same answer for all lines, so they are asked once.
void writeLinesTo(std::ostream& os, const char* line, const std::size_t* lengths, std::size_t count) {
  const bool plain = os.rdbuf() && !os.tie() && !(os.flags() & std::ios_base::unitbuf);
  for (std::size_t i = 0; i < count; line += lengths[i++]) {
    const auto length = static_cast<std::streamsize>(lengths[i]);
    if (plain && os.good())
      withBuffer(os, [&](std::streambuf& buffer) { return buffer.sputn(line, length) == length; });
    else
      os.write(line, length);
    if (plain && os.good())
      withBuffer(os, [](std::streambuf& buffer) { return buffer.pubsync() != -1; });
    else
      os.flush();
  }
}

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
      writeLinesTo(os_, text_, lengths, together);
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
