// Checks that must hold for any input: a broken promise ends the process like a crash, so fuzzers keep the
// input.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace zrml::fuzz {

inline void Check(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

}  // namespace zrml::fuzz
