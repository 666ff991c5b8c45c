// Asks a source::Source everything that tools can ask, in any order and at any position, and checks what its
// interface promises. An answer must be the same whenever it is asked for.
#pragma once

#include <string>

#include "fuzz/input.h"

namespace zrml::fuzz {

/// Whether there is a source at `path`; a fuzzer without one would ask nothing.
bool CanOpen(const std::string& path);

/// Opens the source at `path`, asks the questions that `questions` names, then every one at the positions
/// that there are and next to them.
void AskSource(const std::string& path, Input questions);

}  // namespace zrml::fuzz
