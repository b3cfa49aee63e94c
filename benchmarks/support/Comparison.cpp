#include "support/Comparison.h"

#include "support/Registry.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <tuple>

namespace qav::bench {

std::vector<Entry>& registry() {
  static std::vector<Entry> entries;
  return entries;
}

bool add(std::string operation, std::string library, std::function<void()> work) {
  registry().push_back({std::move(operation), std::move(library), {}, std::move(work), {}});
  return true;
}

bool addOurs(std::string operation, double target, std::function<void()> work) {
  return addOurs(std::move(operation), {{"", target}}, std::move(work));
}

bool addOurs(std::string operation, std::vector<Target> targets, std::function<void()> work) {
  registry().push_back({std::move(operation), kOurs, std::move(targets), std::move(work), {}});
  return true;
}

bool addOurs(std::string operation, double target, std::function<void()> prepare, std::function<void()> work) {
  registry().push_back({std::move(operation), kOurs, {{"", target}}, std::move(work), std::move(prepare)});
  return true;
}

namespace {

// Slow waves, finer ripples and a little noise: neither flat nor random, as photographs are.
std::vector<std::uint8_t> paint(int width, int height, int channels) {
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                                  static_cast<std::size_t>(channels));
  std::minstd_rand random(7);
  std::size_t at = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < channels; ++k) {
        const double wave = std::sin(x * 0.011 + k) + std::cos(y * 0.017 - k) + 0.4 * std::sin((x + y) * 0.09);
        const double noise = static_cast<double>(random() % 17) - 8.0;
        bytes[at++] = static_cast<std::uint8_t>(std::lround(std::min(255.0, std::max(0.0, 128 + 50 * wave + noise))));
      }
    }
  }
  return bytes;
}

}  // namespace

const std::vector<std::uint8_t>& photograph(int width, int height, int channels) {
  static std::map<std::tuple<int, int, int>, std::vector<std::uint8_t>> pictures;
  const auto key = std::make_tuple(width, height, channels);
  const auto found = pictures.find(key);
  return found != pictures.end() ? found->second : pictures.emplace(key, paint(width, height, channels)).first->second;
}

QAVPixelImage* photographImage(int width, int height, QAVPixelImageFormat format) {
  auto* image = new QAVPixelImage(width, height, format);
  const auto& bytes = photograph(width, height, image->GetBytesPerPixel());
  std::memcpy(image->GetPixelsToModify(), bytes.data(), bytes.size());
  return image;
}

void keep(const void* result) {
  benchmark::DoNotOptimize(result);
  benchmark::ClobberMemory();
}

}  // namespace qav::bench
