// What the program declares of its commands, as its help shows them: what pages and completions are made
// from.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace zrml::pages {

struct Option {
  std::vector<std::string> names;  // "-o", "--output"; of an argument its one name
  std::string value;  // what follows the name, "DIR", "[DIR]" if it may be left out; empty for a flag
  std::string description;
  bool HasOptionalValue() const { return value.starts_with('['); }
  bool isRequired = false;
  bool isRepeated = false;
};

struct Command {
  std::string name;  // empty for the program itself
  std::string description;
  std::string usage;  // "zrml info [OPTIONS] PATH..."
  std::vector<Option> arguments;
  std::vector<Option> options;
};

/// The program itself, then its commands in the order of its help.
std::vector<Command> DeclaredCommands();

/// The values of an option that has a list of them in small letters, such as "mzml|mgf".
std::vector<std::string> ChoicesOf(const Option& option);

std::string Joined(const std::vector<std::string>& words, const std::string& separator);
std::string Replaced(std::string text, const std::string& what, const std::string& replacement);

}  // namespace zrml::pages
