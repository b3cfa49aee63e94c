#pragma once

#include "fuzz/Expect.h"
#include "kernels/Level.h"

namespace qav::fuzz {

/// Calls `body` at every instruction-set level of this machine, the plainest first, and expects what it returns to be
/// the same each time.
template <class Body>
auto sameAtEveryLevel(Body body) {
  const kernels::Level before = kernels::activeLevel();
  expect(kernels::setActiveLevel(kernels::Level::Baseline));
  const auto plain = body();
  for (int level = 1; level < kernels::kLevelCount; ++level)
    if (kernels::setActiveLevel(static_cast<kernels::Level>(level))) expect(body() == plain);
  kernels::setActiveLevel(before);
  return plain;
}

}  // namespace qav::fuzz
