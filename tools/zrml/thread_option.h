// --threads of the commands that use several.
#pragma once

#include <CLI/CLI.hpp>

namespace zrml::tool {

/// Leaves `threads` 0 when the option is not given.
void AddThreadOption(CLI::App& options, int& threads);

/// As many as asked for, or as many as there are processors, within reason.
int ThreadCount(int asked);

}  // namespace zrml::tool
