// zrml-pages FOLDER DOCUMENT: writes manual pages and completions of zrml, made from the options that it
// declares, to FOLDER. The meanings of exit statuses are those of the table in DOCUMENT, docs/zrml.md.
#include <fstream>
#include <iostream>

#include "tools/pages/completions.h"
#include "tools/pages/man_page.h"

namespace {

using zrml::pages::Command;

void Write(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

// The rows "| 0 | done |" below the heading; quotes of code are left out.
std::vector<zrml::pages::ExitMeaning> StatusesOf(const std::string& document) {
  std::vector<zrml::pages::ExitMeaning> statuses;
  std::ifstream file(document);
  std::string line;
  while (std::getline(file, line) && line != "## Exit status") continue;
  while (std::getline(file, line)) {
    const std::vector<std::string> cells = CLI::detail::split(line, '|');
    if (cells.size() < 3 || cells[1].find_first_of("0123456789") == std::string::npos) continue;
    statuses.push_back(
        {CLI::detail::trim_copy(cells[1]), zrml::pages::Replaced(CLI::detail::trim_copy(cells[2]), "`", "")});
  }
  if (statuses.empty()) throw std::runtime_error(document + " has no table of exit statuses");
  return statuses;
}

void WriteAll(const std::string& folder, const std::string& document) {
  const std::vector<Command> commands = zrml::pages::DeclaredCommands();
  Write(folder + "/man1/zrml.1", zrml::pages::ProgramPage(commands, StatusesOf(document), ZRML_VERSION));
  for (const Command& command : commands)
    if (!command.name.empty())
      Write(folder + "/man1/zrml-" + command.name + ".1", zrml::pages::CommandPage(command, ZRML_VERSION));
  Write(folder + "/bash/zrml", zrml::pages::BashCompletion(commands));
  Write(folder + "/zsh/_zrml", zrml::pages::ZshCompletion(commands));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 3) throw std::runtime_error("usage: zrml-pages FOLDER DOCUMENT");
    WriteAll(argv[1], argv[2]);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "zrml-pages: " << error.what() << '\n';
    return 1;
  }
}
