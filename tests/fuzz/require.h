// How a fuzz target says that something does not hold.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace vexa {

inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

}  // namespace vexa
