#pragma once

#include <cstdio>

/// Ends a fuzz target's run where something that must hold for every input does not.
namespace qav::fuzz {

inline void expect(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (holds) return;
  std::fprintf(stderr, "%s:%d: what must hold for every input does not\n", file, line);
  __builtin_trap();
}

}  // namespace qav::fuzz
