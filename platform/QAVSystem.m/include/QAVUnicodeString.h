#pragma once

#include <QAVExport.h>
#include <QAVString.h>

#include <string>

/// String of characters. Kept as UTF-8; positions and lengths count characters, and a byte that is not part
/// of valid UTF-8 counts as one character and is kept as it is, so every path survives the way through.
class QAV_EXPORT QAVUnicodeString {
 public:
  QAVUnicodeString() = default;
  /// A null pointer makes an empty string.
  QAVUnicodeString(const char* utf8);  // NOLINT(google-explicit-constructor): literals are paths everywhere
  /// The characters of `utf8`.
  QAVUnicodeString(std::string utf8);  // NOLINT(google-explicit-constructor)
  /// The characters of `utf8`.
  QAVUnicodeString(const QAVString& utf8);  // NOLINT(google-explicit-constructor)

  /// The UTF-8 bytes with a zero after the last one; valid until the string changes.
  const char* ConvertToUTF8() const noexcept { return text_.c_str(); }
  /// The UTF-8 bytes as a string of bytes.
  QAVString ConvertToString() const { return QAVString(text_); }
  /// Length in characters.
  int GetLengthInChar() const noexcept;
  /// True for a length of 0.
  bool IsEmpty() const noexcept { return text_.empty(); }

  /// Character index of the first `pattern` at or after character `start`, or -1. An empty pattern is found
  /// at `start` as long as that lies inside the string or at its end.
  int SearchSubString(const QAVUnicodeString& pattern, int start = 0) const noexcept;
  /// The `count` characters from `start` on, fewer at the end. Empty for a start outside the string or a
  /// negative count.
  QAVUnicodeString SubString(int start, int count) const;

  /// Appends `other`.
  QAVUnicodeString& operator+=(const QAVUnicodeString& other);
  /// `first` followed by `second`.
  friend QAVUnicodeString operator+(QAVUnicodeString first, const QAVUnicodeString& second) { return first += second; }
  /// True for the same bytes.
  friend bool operator==(const QAVUnicodeString&, const QAVUnicodeString&) = default;

 private:
  std::string text_;
};

/// Splits `path` at its last '/' into the folder before it and the file name after it. Without a '/' the
/// folder is empty; for a file in the root it is "/". A backslash is an ordinary character.
QAV_EXPORT void QAVSplitPath(const QAVUnicodeString& path, QAVUnicodeString& folder, QAVUnicodeString& fileName);
