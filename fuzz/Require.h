#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process, which is how a fuzz target reports a finding.
inline void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}
