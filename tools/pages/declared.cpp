#include "tools/pages/declared.h"

#include "tools/zrml/command.h"

namespace zrml::pages {
namespace {

std::string ValueOf(const CLI::Option& option) {
  if (option.get_type_size() == 0) return {};
  const std::string text = CLI::detail::trim_copy(Replaced(option.get_option_text(), "REQUIRED", ""));
  return text.empty() ? option.get_type_name() : text;
}

Option DeclaredOption(const CLI::Option& declared) {
  Option option;
  option.description = declared.get_description();
  option.isRequired = declared.get_required();
  option.isRepeated = declared.get_expected_max() >= CLI::detail::expected_max_vector_size;
  if (declared.get_positional()) {
    option.names = {declared.get_name(true, false)};
    return option;
  }
  for (const std::string& name : declared.get_snames()) option.names.push_back("-" + name);
  for (const std::string& name : declared.get_lnames()) option.names.push_back("--" + name);
  option.value = ValueOf(declared);
  return option;
}

// The line of its help.
std::string UsageOf(const CLI::App& declared) {
  const std::string label = "Usage: ";
  const std::string help = declared.help(declared.get_parent() ? declared.get_parent()->get_name() : "");
  const std::size_t begin = help.find(label) + label.size();
  return help.substr(begin, help.find('\n', begin) - begin);
}

Command DeclaredCommand(const CLI::App& declared) {
  Command command;
  command.name = declared.get_parent() == nullptr ? "" : declared.get_name();
  command.description = declared.get_description();
  command.usage = UsageOf(declared);
  for (const CLI::Option* option : declared.get_options()) {
    if (option->get_group().empty()) continue;  // which help does not show
    (option->get_positional() ? command.arguments : command.options).push_back(DeclaredOption(*option));
  }
  return command;
}

}  // namespace

std::vector<Command> DeclaredCommands() {
  CLI::App parser;
  const tool::Commands declared = tool::DeclareCommands(parser);
  std::vector<Command> commands = {DeclaredCommand(parser)};
  for (const CLI::App* command : parser.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_group().empty()) continue;
    commands.push_back(DeclaredCommand(*command));
  }
  return commands;
}

std::vector<std::string> ChoicesOf(const Option& option) {
  const bool isPlain =
      option.value.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-|") == std::string::npos;
  if (!isPlain || option.value.find('|') == std::string::npos) return {};
  return CLI::detail::split(option.value, '|');
}

std::string Joined(const std::vector<std::string>& words, const std::string& separator) {
  return CLI::detail::join(words, separator);
}

std::string Replaced(std::string text, const std::string& what, const std::string& replacement) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + replacement.size()))
    text.replace(at, what.size(), replacement);
  return text;
}

}  // namespace zrml::pages
