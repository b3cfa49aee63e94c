#include <QAVCheck.h>

#include <atomic>
#include <cstdio>

namespace {

const char* orEmpty(const char* text) { return text ? text : ""; }

void printToStandardError(const char* kind, const char* expression, const char* file, int line, const char* message) {
  std::fprintf(stderr, "%s:%d: check of %s failed: %s %s\n", orEmpty(file), line, kind, orEmpty(expression),
               orEmpty(message));
}

std::atomic<QAVCheckReporter> reporter{&printToStandardError};

}  // namespace

void Check_TRUE_Failed__(const char* expression, const char* file, int line, const char* message) {
  reporter.load()("TRUE", expression, file, line, message);
}

void Check_Pointer_Failed__(const char* expression, const char* file, int line, const char* message) {
  reporter.load()("Pointer", expression, file, line, message);
}

QAVCheckReporter QAVSetCheckReporter(QAVCheckReporter replacement) noexcept {
  return reporter.exchange(replacement ? replacement : &printToStandardError);
}
