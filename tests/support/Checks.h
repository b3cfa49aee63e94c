#pragma once

#include <QAVCheck.h>

#include <string>
#include <vector>

namespace qav::test {

/// Collects the failed checks that are reported while it lives, as "kind expression file:line".
class CheckRecorder {
 public:
  CheckRecorder() : previous_(QAVSetCheckReporter(&record)) { reports().clear(); }
  ~CheckRecorder() { QAVSetCheckReporter(previous_); }
  CheckRecorder(const CheckRecorder&) = delete;
  CheckRecorder& operator=(const CheckRecorder&) = delete;

  static std::vector<std::string>& reports() {
    static std::vector<std::string> all;
    return all;
  }

 private:
  static void record(const char* kind, const char* expression, const char* file, int line, const char* message) {
    reports().push_back(std::string(kind) + " " + expression + " " + file + ":" + std::to_string(line) +
                        (message ? message : ""));
  }

  QAVCheckReporter previous_;
};

}  // namespace qav::test
