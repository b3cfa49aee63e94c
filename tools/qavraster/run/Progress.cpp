#include "run/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace qavraster {
namespace {

constexpr auto kPatience = std::chrono::milliseconds(500);
constexpr int kCells = 40;

Progress* current = nullptr;

}  // namespace

Progress::Progress(std::size_t steps)
    : steps_(std::max<std::size_t>(steps, 1)),
      terminal_(isatty(STDERR_FILENO) == 1),
      start_(std::chrono::steady_clock::now()) {
  current = this;
}

Progress::~Progress() {
  current = nullptr;
  clear();
}

void Progress::clear() {
  if (drawn_ >= 0) std::fputs("\r\033[K", stderr);
  drawn_ = -1;
}

void Progress::print(const std::string& line) {
  clear();
  std::fprintf(stderr, "%s\n", line.c_str());
}

void Progress::begin(const std::string& name) {
  name_ = name;
  ++begun_;
  draw(0.0);
}

void Progress::report(float fraction) {
  if (current) current->draw(fraction >= 0.0f ? std::min(static_cast<double>(fraction), 1.0) : 0.0);
}

void Progress::draw(double fraction) {
  if (!terminal_ || std::chrono::steady_clock::now() - start_ < kPatience) return;
  const double done =
      (static_cast<double>(std::max<std::size_t>(begun_, 1) - 1) + fraction) / static_cast<double>(steps_);
  const int percent = std::clamp(static_cast<int>(done * 100.0), 0, 100);
  if (percent == drawn_ && fraction > 0.0) return;
  drawn_ = percent;
  const auto filled = static_cast<std::size_t>(percent * kCells / 100);
  const std::string bar = std::string(filled, '#') + std::string(kCells - filled, '.');
  std::fprintf(stderr, "\r\033[K[%s] %3d%% %s", bar.c_str(), percent, name_.c_str());
  std::fflush(stderr);
}

}  // namespace qavraster
