// A command of the program. A new command is one file with a class derived from Command, and its line in
// kCommands (command_line.cpp).
#pragma once

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/zrml/open_source.h"
#include "tools/zrml/output.h"
#include "tools/zrml/printout.h"

namespace zrml::tool {

/// An option whose argument `parse` turns into a value, or no value when it is not valid.
template <class Value, class Parse>
CLI::Option* AddParsed(CLI::App& options, const std::string& option, Value& value, Parse parse,
                       const std::string& expected, const std::string& description) {
  const auto store = [=, &value](const std::string& text) {
    const auto parsed = parse(text);
    if (!parsed) throw CLI::ValidationError(option, "\"" + text + "\" is not " + expected);
    value = *parsed;
  };
  return options.add_option_function<std::string>(option, store, description);
}

/// A whole number from 1 to `most`.
std::optional<int> ParseNumber(const std::string& text, int most = std::numeric_limits<int>::max());

/// An option whose argument counts from 1.
CLI::Option* AddNumber(CLI::App& options, const std::string& option, int& number,
                       const std::string& description, int most = std::numeric_limits<int>::max());

class Command {
 public:
  /// Adds the command to the parser.
  Command(CLI::App& parser, const std::string& name, const std::string& description);
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  virtual ~Command();

  bool IsChosen() const { return options_.parsed(); }

  /// Throws a Failure.
  virtual void Run(Output& out) = 0;

 protected:
  CLI::App& Options() { return options_; }

 private:
  CLI::App& options_;
};

/// A command about one source: PATH and --json.
class SourceCommand : public Command {
 protected:
  SourceCommand(CLI::App& parser, const std::string& name, const std::string& description);

  bool WantsJson() const { return wantsJson_; }
  /// As text or JSON, as the user wishes.
  void Print(const Printout& printout, Output& out) const;
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  bool wantsJson_ = false;
};

/// --sample and --function, which choose a function. The function may be left out where the source has only
/// one, such as a data file of a raw directory.
class FunctionCommand : public SourceCommand {
 protected:
  FunctionCommand(CLI::App& parser, const std::string& name, const std::string& description);
  /// Throws a Failure when the source has several functions and none is given.
  FunctionPosition Find(source::Source& source) const;
  int FindItsSample(source::Source& source) const { return FindSample(source, sample_); }
  bool HasFunction() const { return function_.has_value(); }
  /// Whether the given function, or the only one, is the absorbance function.
  bool IsAbsorbance(source::Source& source, int sample) const;

 private:
  int sample_ = 1;
  std::optional<source::FunctionId> function_;
};

using Commands = std::vector<std::unique_ptr<Command>>;

/// Declares the program's options and commands to `parser`; they live as long as the result.
Commands DeclareCommands(CLI::App& parser);

/// For options whose argument is a path.
CLI::Validator IsNotEmpty();

std::unique_ptr<Command> MakeInfoCommand(CLI::App& parser);
std::unique_ptr<Command> MakeScansCommand(CLI::App& parser);
std::unique_ptr<Command> MakeSpectrumCommand(CLI::App& parser);
std::unique_ptr<Command> MakeChromatogramCommand(CLI::App& parser);
std::unique_ptr<Command> MakeLockMassCommand(CLI::App& parser);
std::unique_ptr<Command> MakeConvertCommand(CLI::App& parser);
std::unique_ptr<Command> MakePageCommand(CLI::App& parser);
std::unique_ptr<Command> MakeViewCommand(CLI::App& parser);
std::unique_ptr<Command> MakeCheckCommand(CLI::App& parser);
std::unique_ptr<Command> MakeQcCommand(CLI::App& parser);
std::unique_ptr<Command> MakePluginCommand(CLI::App& parser);

}  // namespace zrml::tool
