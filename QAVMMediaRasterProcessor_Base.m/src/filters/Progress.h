#pragma once

namespace qav {

/// Reports of one operation to the caller's callback: 0 at the start, then a value that grows by the same step with
/// every row, summed in single precision, then 1.
class Progress {
 public:
  Progress(void (*report)(float), float step) : report_(report), step_(step) { send(0.0f); }

  void rowDone() { send(done_ += step_); }
  void finished() { send(1.0f); }

 private:
  void send(float value) {
    if (report_) report_(value);
  }

  void (*report_)(float);
  float step_;
  float done_ = 0.0f;
};

}  // namespace qav
