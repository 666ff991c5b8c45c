#include "tools/zrml/command.h"

#include <charconv>
#include <optional>

#include "common/platform/platform.h"
#include "tools/zrml/failure.h"

namespace zrml {
namespace {

std::optional<int> ParseNumber(const std::string& text, int most) {
  int number = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end && number >= 1 && number <= most
             ? std::optional(number)
             : std::nullopt;
}

}  // namespace

void AddPluginOption(CLI::App& options, std::string& plugin) {
  options.add_option("--plugin", plugin, "The plug-in to load, instead of the one beside this program")
      ->option_text("FILE")
      ->check(IsNotEmpty());
}

CLI::Validator IsNotEmpty() {
  return CLI::Validator([](std::string& text) { return std::string(text.empty() ? "is empty" : ""); }, "");
}

Command::Command(CommandLine& line, const std::string& name, const std::string& description)
    : line_(line), options_(*line.parser.add_subcommand(name, description)) {
  options_.group("Commands");
  AddPluginOption(options_, line_.plugin);
}

Command::~Command() = default;

CLI::Option* Command::AddNumber(const std::string& option, int& number, const std::string& description,
                                int most) {
  const auto store = [option, &number, most](const std::string& text) {
    const std::optional<int> parsed = ParseNumber(text, most);
    if (!parsed) {
      throw CLI::ValidationError(option,
                                 "\"" + text + "\" is not a whole number from 1 to " + std::to_string(most));
    }
    number = *parsed;
  };
  return options_.add_option_function<std::string>(option, store, description)->option_text("N");
}

Source Command::Open(const std::string& path) const {
  if (path.empty()) throw Failure(ExitStatus::kWrongUsage, L"PATH is empty");
  return Source::Open(platform::FromNativePath(path), platform::FromNativePath(line_.plugin));
}

SourceCommand::SourceCommand(CommandLine& line, const std::string& name, const std::string& description)
    : Command(line, name, description) {
  Options()
      .add_option("PATH", path_, "The data source: a raw directory, a data file of one, or a report file")
      ->option_text("REQUIRED")
      ->required();
  Options().add_flag("--json", wantsJson_, "Print JSON, for programs");
}

void SourceCommand::Print(const Report& report, Output& out) const {
  wantsJson_ ? PrintJson(report, out) : PrintText(report, out);
}

FunctionCommand::FunctionCommand(CommandLine& line, const std::string& name, const std::string& description)
    : SourceCommand(line, name, description) {
  AddNumber("--function", function_, "The function, counted from 1");
  Options().parse_complete_callback([this] {
    if (NeedsFunction() && !HasFunction()) throw CLI::RequiredError("--function");
  });
  AddNumber("--sample", sample_, "The sample, counted from 1; the first unless given");
}

FunctionPosition FunctionCommand::Find(const Source& source) const {
  return FindFunction(source.Server(), sample_, function_);
}

int FunctionCommand::FindSampleOf(const Source& source) const { return FindSample(source.Server(), sample_); }

}  // namespace zrml
