#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qav::bench {

struct Entry {
  std::string operation;
  std::string library;
  double target = 0;
  std::function<void()> work;
};

std::vector<Entry>& registry();

}  // namespace qav::bench
