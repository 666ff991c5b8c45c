// What must hold whatever the input: a broken promise ends the process as a crash does, so that fuzzers keep
// the input.
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
