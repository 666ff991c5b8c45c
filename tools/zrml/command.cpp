#include "tools/zrml/command.h"

#include <charconv>

namespace zrml::tool {
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

CLI::Validator IsNotEmpty() {
  return CLI::Validator([](std::string& text) { return std::string(text.empty() ? "is empty" : ""); }, "");
}

Command::Command(CLI::App& parser, const std::string& name, const std::string& description)
    : options_(*parser.add_subcommand(name, description)) {
  options_.group("Commands");
}

Command::~Command() = default;

CLI::Option* AddNumber(CLI::App& options, const std::string& option, int& number,
                       const std::string& description, int most) {
  const auto store = [option, &number, most](const std::string& text) {
    const std::optional<int> parsed = ParseNumber(text, most);
    if (!parsed) {
      throw CLI::ValidationError(option,
                                 "\"" + text + "\" is not a whole number from 1 to " + std::to_string(most));
    }
    number = *parsed;
  };
  return options.add_option_function<std::string>(option, store, description)->option_text("N");
}

SourceCommand::SourceCommand(CLI::App& parser, const std::string& name, const std::string& description)
    : Command(parser, name, description) {
  Options()
      .add_option("PATH", path_, "The data source: a raw directory, a data file of one, or a report file")
      ->option_text("REQUIRED")
      ->required();
  Options().add_flag("--json", wantsJson_, "Print JSON, for programs");
}

void SourceCommand::Print(const Printout& printout, Output& out) const {
  wantsJson_ ? PrintJson(printout, out) : PrintText(printout, out);
}

FunctionCommand::FunctionCommand(CLI::App& parser, const std::string& name, const std::string& description)
    : SourceCommand(parser, name, description) {
  const auto store = [this](const std::string& text) {
    function_ = source::ParseFunctionId(text);
    if (!function_)
      throw CLI::ValidationError("--function", "\"" + text + "\" is not a function such as 4, p2 or p2.2");
  };
  Options()
      .add_option_function<std::string>("--function", store,
                                        "The function, by the number of its files; p2 is processed data")
      ->option_text("N");
  Options().parse_complete_callback([this] {
    if (NeedsFunction() && !HasFunction()) throw CLI::RequiredError("--function");
  });
  AddNumber(Options(), "--sample", sample_, "The sample, counted from 1; the first by default");
}

FunctionPosition FunctionCommand::Find(source::Source& source) const {
  return FindFunction(source, sample_, *function_);
}

int FunctionCommand::FindSampleOf(source::Source& source) const { return FindSample(source, sample_); }

}  // namespace zrml::tool
