#include <QAVTime.h>

#include <chrono>

double QAVGetCurrentTime() noexcept {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}
