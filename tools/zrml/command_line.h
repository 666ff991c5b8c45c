// The program as a function of its arguments.
#pragma once

#include <string>
#include <vector>

#include "tools/zrml/failure.h"

namespace zrml::tool {

/// Runs the command given by `arguments` (native text, without the program's name): its result on
/// standard output, or one line on standard error.
ExitStatus RunCommandLine(std::vector<std::string> arguments);

}  // namespace zrml::tool
