#include "tools/zrml/command_line.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include "convert/selection.h"
#include "tools/zrml/command.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/open_source.h"
#include "tools/zrml/output.h"

namespace zrml::tool {
namespace {

constexpr std::array kCommands = {
    MakeInfoCommand,     MakeScansCommand,   MakeSpectrumCommand, MakeChromatogramCommand,
    MakeLockMassCommand, MakeConvertCommand, MakePageCommand,     MakeViewCommand,
    MakeCheckCommand,    MakeQcCommand,      MakePluginCommand,
};

constexpr int kFiles = 8;  // open at once for one source, and those looked at

// What is wrong with the command line, reworded where the parser's message is hard to read.
std::string ProblemOf(const CLI::App& parser, const CLI::ParseError& error) {
  std::string text = error.what();
  const std::vector<std::string> unknown = parser.remaining(true);
  const bool hasCommand = !parser.get_subcommands().empty();
  if (!unknown.empty() && (hasCommand || unknown.front().starts_with('-')))
    return unknown.front() + " is not expected";
  if (!hasCommand && !unknown.empty()) return "there is no command " + unknown.front();
  if (!hasCommand && dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
    return "a command is missing";
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) == nullptr) return text;
  const std::string option = text.substr(0, text.find(':'));
  return option +
         (text.find("received") == std::string::npos ? " needs a value" : " is given more than once");
}

Failure WrongUsage(const CLI::App& parser, const CLI::ParseError& error) {
  std::string help = "zrml";
  for (const CLI::App* command : parser.get_subcommands()) help += ' ' + command->get_name();
  return Failure(ExitStatus::kWrongUsage, ProblemOf(parser, error) + " (see " + help + " --help)");
}

// --centroid without levels is that with all: its list, which may be left out, is not to be taken for a path,
// and no path for the list.
void GiveLevels(std::vector<std::string>& arguments) {
  constexpr const char* kOption = "--centroid";
  if (arguments.front() != "convert") return;
  for (std::size_t i = 1; i < arguments.size() && arguments[i] != "--"; ++i) {
    if (arguments[i] != kOption) continue;
    const bool hasLevels = i + 1 < arguments.size() && convert::NumberSet::Parse(arguments[i + 1]);
    if (!hasLevels) arguments[i] += "=1-";
  }
}

// Other forms of what the parser knows: "help", "help COMMAND", --json ahead of the command, and --centroid
// alone.
void Translate(std::vector<std::string>& arguments) {
  if (arguments.empty()) return;
  if (arguments.front() == "help") {
    arguments.erase(arguments.begin());
    arguments.push_back("--help");
  } else if (arguments.front() == "--json") {
    std::rotate(arguments.begin(), arguments.begin() + 1, arguments.end());
  }
  GiveLevels(arguments);
}

// The parser's help and version, or the chosen command's result.
void Run(CLI::App& parser, const Commands& commands, std::vector<std::string> arguments, Output& out) {
  Translate(arguments);
  std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the end
  try {
    parser.parse(std::move(arguments));
  } catch (const CLI::CallForHelp& call) {
    if (parser.get_subcommands().empty() && !parser.remaining().empty()) throw WrongUsage(parser, call);
    return out.Text(parser.help());
  } catch (const CLI::CallForVersion& version) {
    return out.Text(std::string(version.what()) + "\n");
  } catch (const CLI::ParseError& error) {
    throw WrongUsage(parser, error);
  }
  for (const std::unique_ptr<Command>& command : commands) {
    if (!command->IsChosen()) continue;
    RequireFiles(kFiles);
    command->Run(out);
  }
}

ExitStatus PrintFailure(ExitStatus status, const std::string& message) {
  PrintError(message);
  return status;
}

}  // namespace

Commands DeclareCommands(CLI::App& parser) {
  parser.name("zrml");
  parser.description("Reads mass-spectrometry data: MassLynx raw directories and OpenLynx reports.");
  parser.footer("zrml help COMMAND, or zrml COMMAND --help, tells more about a command.");
  parser.allow_windows_style_options(false);  // a slash begins a path
  parser.get_formatter()->label("SUBCOMMAND", "COMMAND");
  parser.get_formatter()->label("Positionals", "Arguments");
  parser.get_formatter()->column_width(28);
  parser.set_version_flag("-V,--version", "zrml " ZRML_VERSION, "Print the version of this program");
  parser.require_subcommand(1);
  Commands commands;
  for (const auto make : kCommands) commands.push_back(make(parser));
  return commands;
}

ExitStatus RunCommandLine(std::vector<std::string> arguments) {
  ReportFailedWrites();
  try {
    CLI::App parser;
    const Commands commands = DeclareCommands(parser);
    Output out;
    Run(parser, commands, std::move(arguments), out);
    out.Finish();
    return ExitStatus::kDone;
  } catch (const ReaderGone&) {
    return ExitStatus::kDone;
  } catch (const Failure& failure) {
    return PrintFailure(failure.status, failure.message);
  } catch (const source::Error& error) {
    return PrintFailure(FailureOf(error).status, error.Message());
  } catch (const std::bad_alloc&) {
    return PrintFailure(ExitStatus::kUnreadable, "not enough memory");
  } catch (const std::exception& error) {
    return PrintFailure(ExitStatus::kUnreadable, error.what());
  }
}

}  // namespace zrml::tool
