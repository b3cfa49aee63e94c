#pragma once

#include "kernels/Level.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace qav::test {

/// Runs `body` once at every instruction-set level that this machine has, names the level in failures, and says which
/// levels it could not run.
template <class Body>
void atEveryLevel(Body body) {
  using kernels::Level;
  for (int number = 0; number < kernels::kLevelCount; ++number) {
    const auto level = static_cast<Level>(number);
    if (!kernels::setActiveLevel(level)) {
      std::printf("[  SKIPPED ] level %s: this machine does not have it\n", kernels::levelName(level));
      continue;
    }
    SCOPED_TRACE(kernels::levelName(level));
    body();
  }
  kernels::setActiveLevel(kernels::bestLevel());
}

}  // namespace qav::test
