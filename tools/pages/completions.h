// Completions of commands, options and their values at a shell's prompt.
#pragma once

#include "tools/pages/declared.h"

namespace zrml::pages {

std::string BashCompletion(const std::vector<Command>& commands);
std::string ZshCompletion(const std::vector<Command>& commands);

}  // namespace zrml::pages
