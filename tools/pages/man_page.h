// Manual pages in the language of man(7).
#pragma once

#include "tools/pages/declared.h"

namespace zrml::pages {

/// The number of an exit status, and what it means.
struct ExitMeaning {
  std::string status;
  std::string meaning;
};

/// The page of one command.
std::string CommandPage(const Command& command, const std::string& version);

/// The page of the program, `commands.front()`, which names the others.
std::string ProgramPage(const std::vector<Command>& commands, const std::vector<ExitMeaning>& statuses,
                        const std::string& version);

}  // namespace zrml::pages
