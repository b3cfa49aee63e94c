#include <QAVUnicodeString.h>

#include <algorithm>
#include <utility>

namespace {

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// Bytes of the character at `at`: those of a well-formed UTF-8 sequence, otherwise one.
std::size_t characterLength(const std::string& text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const std::size_t length = lead >= 0xF0 && lead < 0xF8   ? 4
                             : lead >= 0xE0 && lead < 0xF0 ? 3
                             : lead >= 0xC2 && lead < 0xE0 ? 2
                                                           : 1;
  if (at + length > text.size()) return 1;
  for (std::size_t i = 1; i < length; ++i)
    if (!isContinuation(text[at + i])) return 1;
  return length;
}

// Byte offset of character `index`, or npos when the string is shorter. The end counts as a position.
std::size_t offsetOf(const std::string& text, int index) {
  if (index < 0) return std::string::npos;
  std::size_t at = 0;
  for (; index > 0; --index) {
    if (at >= text.size()) return std::string::npos;
    at += characterLength(text, at);
  }
  return at;
}

int charactersBefore(const std::string& text, std::size_t end) {
  int count = 0;
  for (std::size_t at = 0; at < end; at += characterLength(text, at)) ++count;
  return count;
}

}  // namespace

QAVUnicodeString::QAVUnicodeString(const char* utf8) : text_(utf8 ? utf8 : "") {}

QAVUnicodeString::QAVUnicodeString(std::string utf8) : text_(std::move(utf8)) {}

QAVUnicodeString::QAVUnicodeString(const QAVString& utf8) : text_(utf8.AsStdString()) {}

int QAVUnicodeString::GetLengthInChar() const noexcept { return charactersBefore(text_, text_.size()); }

int QAVUnicodeString::SearchSubString(const QAVUnicodeString& pattern, int start) const noexcept {
  const std::size_t from = offsetOf(text_, start);
  if (from == std::string::npos) return -1;
  const std::size_t found = text_.find(pattern.text_, from);
  return found == std::string::npos ? -1 : charactersBefore(text_, found);
}

QAVUnicodeString QAVUnicodeString::SubString(int start, int count) const {
  const std::size_t from = offsetOf(text_, start);
  if (from == std::string::npos || count < 0) return {};
  std::size_t end = from;
  for (; count > 0 && end < text_.size(); --count) end += characterLength(text_, end);
  return text_.substr(from, end - from);
}

QAVUnicodeString& QAVUnicodeString::operator+=(const QAVUnicodeString& other) {
  text_ += other.text_;
  return *this;
}

void QAVSplitPath(const QAVUnicodeString& path, QAVUnicodeString& folder, QAVUnicodeString& fileName) {
  const std::string text = path.ConvertToUTF8();
  const std::size_t slash = text.rfind('/');
  fileName = slash == std::string::npos ? text : text.substr(slash + 1);
  folder = slash == std::string::npos ? std::string() : text.substr(0, std::max<std::size_t>(slash, 1));
}
