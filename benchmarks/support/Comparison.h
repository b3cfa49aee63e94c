#pragma once

#include <QAVPixelImage.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Timing one piece of work as this library and as others do it.
namespace qav::bench {

inline constexpr const char* kOurs = "ours";

/// How many times faster than a rival an operation is to be; 0 where there is no target.
struct Target {
  std::string rival;  ///< empty for the best one
  double ratio = 0;
};

/// Adds the work of one library for one operation; one call of `work` does the operation once. All entries with the
/// same operation are compared; the one by kOurs carries the target over the best rival, or one for each of several.
/// Call it from a namespace-scope initialiser, and make inputs inside `work`'s first call or through the functions
/// below, so that unused ones cost nothing.
bool add(std::string operation, std::string library, std::function<void()> work);
bool addOurs(std::string operation, double target, std::function<void()> work);
bool addOurs(std::string operation, std::vector<Target> targets, std::function<void()> work);
/// With `prepare` called before each call of `work`, untimed: for work in place whose time depends on what it finds.
bool addOurs(std::string operation, double target, std::function<void()> prepare, std::function<void()> work);

/// Ours and one rival: the best, or one with a target of its own. Milliseconds are per call of work.
struct Row {
  std::string operation;
  double ours = 0;
  std::string rival;
  double rivals = 0;
  double target = 0;
};

/// The picture size that most rows use.
inline constexpr int kWidth = 1920;
inline constexpr int kHeight = 1080;

/// A photograph-like picture of a byte format, the same in every run (made once for each size and format).
const std::vector<std::uint8_t>& photograph(int width, int height, int channels);
/// A new image with that picture; one reference for the caller.
QAVPixelImage* photographImage(int width, int height, QAVPixelImageFormat format);

/// Keeps the compiler from dropping a result.
void keep(const void* result);

}  // namespace qav::bench
