#pragma once

#include <QAVExport.h>

#include <string>

/// String of bytes, as file paths and names are on this platform. Holds no zero byte's meaning of its own.
class QAV_EXPORT QAVString {
 public:
  QAVString() = default;
  /// A null pointer makes an empty string.
  QAVString(const char* text);  // NOLINT(google-explicit-constructor): literals are paths everywhere
  /// The bytes of `text`.
  QAVString(std::string text);  // NOLINT(google-explicit-constructor)

  /// The bytes with a zero after the last one; valid until the string changes.
  const char* ConvertToChar() const noexcept { return text_.c_str(); }
  /// Length in bytes.
  int GetLengthInChar() const noexcept { return static_cast<int>(text_.size()); }
  /// True for a length of 0.
  bool IsEmpty() const noexcept { return text_.empty(); }
  /// The same bytes.
  const std::string& AsStdString() const noexcept { return text_; }

  /// Appends `other`.
  QAVString& operator+=(const QAVString& other);
  /// `first` followed by `second`.
  friend QAVString operator+(QAVString first, const QAVString& second) { return first += second; }
  /// True for the same bytes.
  friend bool operator==(const QAVString&, const QAVString&) = default;

 private:
  std::string text_;
};
