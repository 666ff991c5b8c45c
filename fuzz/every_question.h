// Asks a source::Source everything that tools can ask, in any order and at any position, and checks what its
// interface promises. Every answer must be the same each time.
#pragma once

#include <string>

#include "fuzz/input.h"

namespace zrml::fuzz {

/// Whether there is a source at `path`; without one a fuzzer would ask nothing.
bool CanOpen(const std::string& path);

/// Opens the source at `path`, asks the questions listed in `questions`, then every question at all existing
/// positions and those next to them.
void AskSource(const std::string& path, Input questions);

}  // namespace zrml::fuzz
