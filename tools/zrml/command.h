// A command of the program. A new command is one file with a class derived from Command, and its line in
// kCommands (command_line.cpp).
#pragma once

#include <limits>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "tools/zrml/output.h"
#include "tools/zrml/report.h"
#include "tools/zrml/source.h"

namespace zrml {

/// The command line: the parser, and what holds for every command.
struct CommandLine {
  CLI::App parser;
  std::string plugin;  // native text; empty for the file beside the program
};

class Command {
 public:
  /// Adds the command to the parser with what all have: --plugin.
  Command(CommandLine& line, const std::string& name, const std::string& description);
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  virtual ~Command();

  bool IsChosen() const { return options_.parsed(); }

  /// Throws a Failure.
  virtual void Run(Output& out) = 0;

 protected:
  /// An option whose argument counts from 1.
  CLI::Option* AddNumber(const std::string& option, int& number, const std::string& description,
                         int most = std::numeric_limits<int>::max());

  CLI::App& Options() { return options_; }
  Source Open(const std::string& path) const;

 private:
  CommandLine& line_;
  CLI::App& options_;
};

/// A command about one source: PATH and --json.
class SourceCommand : public Command {
 protected:
  SourceCommand(CommandLine& line, const std::string& name, const std::string& description);

  bool WantsJson() const { return wantsJson_; }
  /// As text or JSON, as the user wants it.
  void Print(const Report& report, Output& out) const;
  const std::string& Path() const { return path_; }
  Source OpenSource() const { return Open(path_); }

 private:
  std::string path_;
  bool wantsJson_ = false;
};

/// --sample and --function, which choose a function, or a sample where another option makes the function
/// optional.
class FunctionCommand : public SourceCommand {
 protected:
  FunctionCommand(CommandLine& line, const std::string& name, const std::string& description);
  FunctionPosition Find(const Source& source) const;
  int FindSampleOf(const Source& source) const;
  bool HasFunction() const { return function_ != 0; }

  /// Whether the options given ask for something of a function.
  virtual bool NeedsFunction() const { return true; }

 private:
  int sample_ = 1;
  int function_ = 0;
};

/// For options whose argument is a path.
CLI::Validator IsNotEmpty();

void AddPluginOption(CLI::App& options, std::string& plugin);

std::unique_ptr<Command> MakeInfoCommand(CommandLine& line);
std::unique_ptr<Command> MakeSpectrumCommand(CommandLine& line);
std::unique_ptr<Command> MakeChromatogramCommand(CommandLine& line);
std::unique_ptr<Command> MakeConvertCommand(CommandLine& line);
std::unique_ptr<Command> MakeCheckCommand(CommandLine& line);

}  // namespace zrml
