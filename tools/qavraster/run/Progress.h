#pragma once

#include <chrono>
#include <string>

namespace qavraster {

/// A bar on standard error, drawn only on a terminal and only once the work has taken half a second.
///
/// The work is a row of steps of equal weight. The library's progress callbacks carry no user data, so there is one
/// bar in a process.
class Progress {
 public:
  using Callback = void (*)(float);

  explicit Progress(std::size_t steps);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Names the step that begins now; the one before is done.
  void begin(const std::string& name);
  /// The steps before the one of this number, from 0, are done or given up.
  void skipTo(std::size_t step) { begun_ = step; }
  /// A line on standard error, without disturbing the bar.
  void print(const std::string& line);
  /// What the library calls with the fraction of the step that is done.
  static void report(float fraction);

 private:
  void draw(double fraction);
  void clear();

  std::size_t steps_;
  std::size_t begun_ = 0;
  std::string name_;
  bool terminal_;
  int drawn_ = -1;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace qavraster
