#pragma once

/// Ends a fuzz target's run where something that must hold for every input does not.
namespace qav::fuzz {

inline void expect(bool holds) {
  if (!holds) __builtin_trap();
}

}  // namespace qav::fuzz
