#include "tools/pages/man_page.h"

#include <cctype>

namespace zrml::pages {
namespace {

// Text as it stands: a hyphen that can be copied, no commands at the start of a line.
std::string Plain(const std::string& text) {
  const std::string escaped = Replaced(Replaced(text, "\\", "\\e"), "-", "\\-");
  return escaped.starts_with('.') || escaped.starts_with('\'') ? "\\&" + escaped : escaped;
}

std::string Bold(const std::string& text) { return "\\fB" + Plain(text) + "\\fR"; }

std::string Head(const std::string& name, const std::string& description, const std::string& usage,
                 const std::string& version) {
  std::string title = name;
  for (char& letter : title) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  const std::size_t first =
      usage.find_first_of("[<") == usage.npos ? usage.size() : usage.find_first_of("[<");
  return ".TH " + Plain(title) + " 1 \"\" \"zrml " + version + "\" \"User Commands\"\n.SH NAME\n" +
         Plain(name) + " \\- " + Plain(description) + "\n.SH SYNOPSIS\n" + Bold(usage.substr(0, first)) +
         Plain(usage.substr(first)) + "\n";
}

std::string Entry(const std::string& head, const std::string& text) {
  return ".TP\n" + head + "\n" + Plain(text) + "\n";
}

std::string OptionEntry(const Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.names) names.push_back(Bold(name));
  return Entry(Joined(names, ", ") + (option.value.empty() ? "" : " " + Plain(option.value)),
               option.description + (option.isRequired ? " (required)" : ""));
}

std::string ArgumentEntry(const Option& argument) {
  return Entry(Bold(argument.names.front()) + (argument.isRepeated ? " ..." : ""), argument.description);
}

template <class Print>
std::string Section(const std::string& title, const std::vector<Option>& options, Print print) {
  if (options.empty()) return {};
  std::string text = ".SH " + title + "\n";
  for (const Option& option : options) text += print(option);
  return text;
}

std::string Options(const Command& command) {
  return Section("ARGUMENTS", command.arguments, ArgumentEntry) +
         Section("OPTIONS", command.options, OptionEntry);
}

std::string Name(const Command& command) { return "zrml-" + command.name; }

}  // namespace

std::string CommandPage(const Command& command, const std::string& version) {
  return Head(Name(command), command.description, command.usage, version) + Options(command) +
         ".SH EXIT STATUS\nThose of\n.BR zrml (1).\n.SH SEE ALSO\n.BR zrml (1)\n";
}

std::string ProgramPage(const std::vector<Command>& commands, const std::vector<ExitMeaning>& statuses,
                        const std::string& version) {
  const Command& program = commands.front();
  std::string text = Head("zrml", program.description, program.usage, version) + ".SH COMMANDS\n";
  std::string others;
  for (const Command& command : commands) {
    if (command.name.empty()) continue;
    text += Entry(Bold(command.name), command.description);
    others += (others.empty() ? "" : ",\n") + (".BR " + Plain(Name(command)) + " (1)");
  }
  text += Options(program) + ".SH EXIT STATUS\n";
  for (const ExitMeaning& status : statuses) text += Entry(Bold(status.status), status.meaning);
  return text + ".SH SEE ALSO\n" + others + "\n";
}

}  // namespace zrml::pages
