#pragma once

#include "support/Comparison.h"

namespace qav::bench {

struct Entry {
  std::string operation;
  std::string library;
  std::vector<Target> targets;
  std::function<void()> work;
  std::function<void()> prepare;
};

std::vector<Entry>& registry();

}  // namespace qav::bench
