#include <QAVString.h>

#include <utility>

QAVString::QAVString(const char* text) : text_(text ? text : "") {}

QAVString::QAVString(std::string text) : text_(std::move(text)) {}

QAVString& QAVString::operator+=(const QAVString& other) {
  text_ += other.text_;
  return *this;
}
