#include "tools/pages/completions.h"

namespace zrml::pages {
namespace {

// What completes a value: a folder, a file (or a folder, such as a raw directory), one of a list; nothing for
// numbers.
enum class Kind { kNothing, kFolder, kFile, kChoice };

Kind KindOf(const Option& option) {
  if (!ChoicesOf(option).empty()) return Kind::kChoice;
  const std::string& value = option.value.empty() ? option.names.front() : option.value;
  if (value == "DIR") return Kind::kFolder;
  return value == "FILE" || value == "PATH" ? Kind::kFile : Kind::kNothing;
}

std::vector<std::string> NamesOf(const std::vector<Option>& options) {
  std::vector<std::string> names;
  for (const Option& option : options) names.insert(names.end(), option.names.begin(), option.names.end());
  return names;
}

std::vector<std::string> NamesOf(const std::vector<Command>& commands) {
  std::vector<std::string> names;
  for (const Command& command : commands)
    if (!command.name.empty()) names.push_back(command.name);
  return names;
}

// The line that offers what `generate`, arguments of compgen, gives. Names may have spaces.
std::string BashOffer(const std::string& generate) {
  return "mapfile -t COMPREPLY < <(compgen " + generate + " -- \"$word\")";
}

std::string BashWords(const std::vector<std::string>& words) {
  return BashOffer("-W '" + Joined(words, " ") + "'");
}

std::string BashReply(const Option& option) {
  const Kind kind = KindOf(option);
  if (kind == Kind::kNothing) return ":";
  if (kind == Kind::kChoice) return BashWords(ChoicesOf(option));
  return "compopt -o filenames; " + BashOffer(kind == Kind::kFolder ? "-d" : "-f");
}

// The rows for the values of a command's options, then for its options, then for its arguments.
std::string BashRows(const Command& command) {
  std::string rows;
  for (const Option& option : command.options) {
    if (option.value.empty() || option.HasOptionalValue()) continue;
    std::vector<std::string> patterns;
    for (const std::string& name : option.names) patterns.push_back(command.name + ":" + name + ":*");
    rows += "    " + Joined(patterns, "|") + ") " + BashReply(option) + " ;;\n";
  }
  rows += "    " + command.name + ":*:-*) " + BashWords(NamesOf(command.options)) + " ;;\n";
  if (!command.arguments.empty())
    rows += "    " + command.name + ":*) " + BashReply(command.arguments.front()) + " ;;\n";
  return rows;
}

std::string InQuotes(const std::string& text) { return "'" + Replaced(text, "'", "'\\''") + "'"; }

std::string ZshText(std::string text) {
  for (const char* const special : {"\\", "[", "]", ":"})
    text = Replaced(text, special, "\\" + std::string(special));
  return text;
}

std::string ZshAction(const Option& option) {
  switch (KindOf(option)) {
    case Kind::kFolder:
      return "_files -/";
    case Kind::kFile:
      return "_files";
    case Kind::kChoice:
      return "(" + Joined(ChoicesOf(option), " ") + ")";
    default:
      return " ";
  }
}

// Once an option is there, its other names are not offered.
std::string ZshOption(const Option& option) {
  std::string specs;
  for (const std::string& name : option.names) {
    std::string spec = "(" + Joined(option.names, " ") + ")" + name;
    if (!option.value.empty()) spec += name.starts_with("--") ? "=" : "+";
    spec += "[" + ZshText(option.description) + "]";
    if (!option.value.empty())
      spec += (option.HasOptionalValue() ? "::" : ":") + ZshText(option.value) + ":" + ZshAction(option);
    specs += " \\\n        " + InQuotes(option.isRepeated ? "*" + spec.substr(spec.find(')') + 1) : spec);
  }
  return specs;
}

std::string ZshArgument(const Option& argument) {
  const std::string colons = argument.isRepeated ? "*:" : argument.isRequired ? ":" : "::";
  return " \\\n        " + InQuotes(colons + ZshText(argument.names.front()) + ":" + ZshAction(argument));
}

std::string ZshArguments(const Command& command) {
  std::string text = "_arguments";
  for (const Option& option : command.options) text += ZshOption(option);
  for (const Option& argument : command.arguments) text += ZshArgument(argument);
  return text;
}

}  // namespace

std::string BashCompletion(const std::vector<Command>& commands) {
  std::string text = R"(# Completion of zrml for bash.
_zrml() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then command=; fi
  if [ "$word" = = ]; then  # --option= and its value are three words
    word=
  elif [ "$before" = = ]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  case $command:$before:$word in
)";
  for (const Command& command : commands) text += BashRows(command);
  std::vector<std::string> names = NamesOf(commands);
  names.push_back("help");
  return text + "    :*|help:help:*) " + BashWords(names) + " ;;\n  esac\n}\ncomplete -F _zrml zrml\n";
}

std::string ZshCompletion(const std::vector<Command>& commands) {
  std::string text =
      "#compdef zrml\n# Completion of zrml for zsh.\n"
      "local curcontext=$curcontext state\nlocal -a zrml_commands\nzrml_commands=(";
  std::string cases;
  for (const Command& command : commands) {
    if (command.name.empty()) continue;
    text += "\n  " + InQuotes(ZshText(command.name) + ":" + command.description);
    cases += "      " + command.name + ")\n        " + ZshArguments(command) + " ;;\n";
  }
  return text + "\n  'help:Print the help of a command'\n)\n" +
         Replaced(ZshArguments(commands.front()), "_arguments", "_arguments -C") +
         " \\\n        ':command:->command' \\\n        '*::argument:->argument' && return\n" +
         R"(case $state in
  command) _describe command zrml_commands ;;
  argument)
    curcontext=${curcontext%:*:*}:zrml-$words[1]:
    case $words[1] in
      help) _describe command zrml_commands ;;
)" + cases +
         "    esac ;;\nesac\n";
}

}  // namespace zrml::pages
